#include "ExternalTestSupport.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace orvotest;
using externaltest::waitUntil;
using externaltest::writeInPlace;

namespace {

QString run(const QStringList &args, int expectedExit = 0)
{
    QByteArray out, err;
    const int code = runOrvo(args, &out, &err);
    EXPECT_EQ(code, expectedExit) << args.join(' ').toStdString() << "\n" << err.constData();
    return QString::fromUtf8(expectedExit == 0 ? out : err);
}

QJsonValue runJson(const QStringList &args)
{
    QByteArray out, err;
    EXPECT_EQ(runOrvo(args, &out, &err), 0) << err.constData();
    const QJsonDocument doc = QJsonDocument::fromJson(out);
    return doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object());
}

} // namespace

TEST(ExternalCli, SourceListAddRemove)
{
    QTemporaryDir tmp;
    const QString a = tmp.filePath(QStringLiteral("a")), b = tmp.filePath(QStringLiteral("b"));
    ASSERT_TRUE(QDir().mkpath(a) && QDir().mkpath(b));
    EXPECT_EQ(run({"source", "add", a, b}), QStringLiteral("added %1\nadded %2\n").arg(a, b));
    EXPECT_EQ(run({"source", "add", a + "/"}), QStringLiteral("already a source: %1\n").arg(a));
    EXPECT_EQ(run({"source", "list"}), a + '\n' + b + '\n');
    EXPECT_TRUE(run({"source", "add", tmp.filePath("nope")}, 1).contains("no such folder"));
    EXPECT_TRUE(run({"source", "remove", tmp.filePath("nope")}, 1).contains("not a source"));
    run({"source", "remove", a});
    QDir(b).removeRecursively();
    const QJsonArray rows = runJson({"source", "list", "--json"}).toArray();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.at(0)["path"].toString(), b);
    EXPECT_FALSE(rows.at(0)["exists"].toBool()); // a missing folder stays a source
    run({"source", "frobnicate"}, 2);
}

TEST(ExternalCli, SettingsTreeAndFiles)
{
    QTemporaryDir tmp;
    const QString d = tmp.filePath(QStringLiteral("Journal"));
    ASSERT_TRUE(writeFile(d + "/2024/jan.md", "# January\nCold.\n"));
    ASSERT_TRUE(writeFile(d + "/2024/feb.md", "# February\n"));
    ASSERT_TRUE(writeFile(d + "/readme.txt", "read me"));
    ASSERT_TRUE(writeFile(d + "/photo.jpg", "jpg"));
    ASSERT_TRUE(writeFile(d + "/.trash/old.md", "old"));

    EXPECT_TRUE(run({"source", "settings", d}).contains("folderType = 10\n"));
    run({"source", "settings", d, "orderBy", "3"});
    run({"source", "settings", d, "name", "My Journal"});
    EXPECT_TRUE(run({"source", "settings", d, "folderType", "ten"}, 1).contains("unsigned integer"));
    const QJsonObject settings = runJson({"source", "settings", d, "--json"}).toObject();
    EXPECT_EQ(settings["orderBy"].toInt(), 3);
    EXPECT_EQ(settings["name"].toString(), QStringLiteral("My Journal"));
    ASSERT_TRUE(writeFile(d + "/.OrvoMetaData/setting.json", "{broken"));
    QByteArray out, err;
    EXPECT_EQ(runOrvo({"source", "settings", d}, &out, &err), 0);
    EXPECT_TRUE(err.contains("defaults")) << err.constData();
    EXPECT_TRUE(out.contains("orderBy = 0\n"));
    ASSERT_TRUE(QFile::remove(d + "/.OrvoMetaData/setting.json"));
    run({"source", "settings", d, "orderBy", "3"});

    EXPECT_EQ(run({"source", "tree", d}), QStringLiteral("Journal (1)\n  2024 (2)\n"));
    const QJsonObject tree = runJson({"source", "tree", d, "--json"}).toObject();
    EXPECT_EQ(tree["children"].toArray().at(0)["fullPath"].toString(), d + "/2024");

    const QJsonArray rows = runJson({"source", "files", d, "--json"}).toArray();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows.at(0)["realPath"].toString(), d + "/readme.txt");
    EXPECT_EQ(rows.at(1)["title"].toString(), QStringLiteral("feb")); // orderBy 3: by title
    EXPECT_EQ(rows.at(2)["content"].toString(), QStringLiteral("# January Cold. "));
    EXPECT_TRUE(run({"source", "files", d}).startsWith(d + "/readme.txt\t"));
    EXPECT_TRUE(run({"source", "tree", d + "/readme.txt"}, 1).contains("not a folder"));
}

TEST(ExternalCli, WatchPrintsBatchesUntilInterrupted)
{
    QTemporaryDir tmp;
    const QString d = tmp.filePath(QStringLiteral("w"));
    ASSERT_TRUE(writeFile(d + "/a.md", "a"));
    QProcess p;
    p.start(binDir() + "/orvo", {"watch", d, "--json"});
    ASSERT_TRUE(p.waitForStarted());
    QByteArray err, out;
    QObject::connect(&p, &QProcess::readyReadStandardError, [&] { err += p.readAllStandardError(); });
    QObject::connect(&p, &QProcess::readyReadStandardOutput, [&] { out += p.readAllStandardOutput(); });
    ASSERT_TRUE(waitUntil([&] { return err.contains("watching"); })) << err.constData();
    EXPECT_TRUE(err.contains("(1 folders)"));

    ASSERT_TRUE(writeFile(d + "/a.md", "changed by another program"));
    ASSERT_TRUE(QDir().mkpath(d + "/new"));
    ASSERT_TRUE(writeInPlace(d + "/new/b.md", "b"));
    ASSERT_TRUE(waitUntil([&] { return out.contains('\n'); })) << out.constData();
    const QJsonObject batch = QJsonDocument::fromJson(out.left(out.indexOf('\n'))).object();
    EXPECT_EQ(batch["batch"].toInt(), 1);
    const QStringList paths = batch["paths"].toVariant().toStringList();
    EXPECT_TRUE(paths.contains(d + "/a.md"));
    EXPECT_TRUE(paths.contains(d + "/new"));
    EXPECT_TRUE(paths.contains(d + "/new/b.md"));
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));

    p.terminate(); // SIGTERM
    ASSERT_TRUE(p.waitForFinished(10000));
    EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(p.exitCode(), 0);

    EXPECT_TRUE(run({"watch", tmp.filePath("missing")}, 1).contains("no such folder"));
}
