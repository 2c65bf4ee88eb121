// End-to-end: the `orvo` command line on temporary libraries, each test
// with a user of its own (HOME and XDG folders), as a fresh machine.
#include "library/FMDatabase.h"
#include "library/ORVDBManager.h"
#include "support/TestEnv.h"

#include <QCryptographicHash>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class Cli : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            saved.insert(name, qgetenv(name));
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral(".config")).toUtf8());
        qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral(".local/share")).toUtf8());
        qputenv("XDG_CACHE_HOME", home.filePath(QStringLiteral(".cache")).toUtf8());
        lib = home.filePath(QStringLiteral("My Library"));
    }
    void TearDown() override
    {
        for (auto it = saved.begin(); it != saved.end(); ++it)
            qputenv(it.key(), it.value());
    }

    struct Run {
        int code = -1;
        QString out;
        QString err;
    };
    Run orvo(const QStringList &args)
    {
        QByteArray out, err;
        Run r;
        r.code = orvotest::runOrvo(args, &out, &err);
        r.out = QString::fromUtf8(out);
        r.err = QString::fromUtf8(err);
        return r;
    }
    QJsonValue json(const QStringList &args)
    {
        const Run r = orvo(args);
        EXPECT_EQ(r.code, 0) << qPrintable(r.err);
        const QJsonDocument doc = QJsonDocument::fromJson(r.out.toUtf8());
        return doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object());
    }
    QJsonArray docList(const QString &library) { return json({"--library", library, "doc", "list", "--json"}).toArray(); }

    // Every entry under a folder with a digest of its content.
    QMap<QString, QByteArray> snapshot(const QString &folder)
    {
        QMap<QString, QByteArray> files;
        QDir dir(folder);
        for (const QFileInfo &fi : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden)) {
            if (fi.isDir()) {
                const auto sub = snapshot(fi.absoluteFilePath());
                files.insert(fi.fileName() + QLatin1Char('/'), QByteArray());
                for (auto it = sub.begin(); it != sub.end(); ++it)
                    files.insert(fi.fileName() + QLatin1Char('/') + it.key(), it.value());
            } else {
                files.insert(fi.fileName(),
                             QCryptographicHash::hash(orvotest::readFile(fi.absoluteFilePath()), QCryptographicHash::Sha1));
            }
        }
        return files;
    }

    QTemporaryDir home;
    QString lib;
    QMap<QByteArray, QByteArray> saved;
};

} // namespace

TEST_F(Cli, InitMakesTheMainLibraryWithItsWelcomeDocument)
{
    const Run none = orvo({"doc", "list"});
    EXPECT_EQ(none.code, 1);
    EXPECT_TRUE(none.err.startsWith(QStringLiteral("orvo: there is no library yet")));
    EXPECT_TRUE(none.err.contains(QStringLiteral("orvo library init")));

    const Run init = orvo({"library", "init", lib});
    ASSERT_EQ(init.code, 0) << qPrintable(init.err);
    EXPECT_TRUE(init.out.contains(lib));

    for (const QJsonArray &list : {docList(lib), json({"doc", "list", "--json"}).toArray()}) {
        ASSERT_EQ(list.size(), 1);
        const QJsonObject welcome = list.first().toObject();
        EXPECT_EQ(welcome.value(QStringLiteral("title")).toString(), QStringLiteral("Welcome to Orvo!"));
        const QJsonArray cats = welcome.value(QStringLiteral("categories")).toArray();
        ASSERT_EQ(cats.size(), 1);
        EXPECT_EQ(cats.first().toObject().value(QStringLiteral("name")).toString(), QStringLiteral("Orvo"));
        EXPECT_TRUE(QFileInfo::exists(welcome.value(QStringLiteral("path")).toString()));
    }

    const QJsonObject info = json({"library", "info", "--json"}).toObject();
    EXPECT_EQ(info.value(QStringLiteral("path")).toString(), lib);
    EXPECT_TRUE(info.value(QStringLiteral("main")).toBool());
    EXPECT_TRUE(info.value(QStringLiteral("valid")).toBool());
    EXPECT_EQ(info.value(QStringLiteral("documents")).toInt(), 1);
    EXPECT_EQ(info.value(QStringLiteral("categories")).toInt(), 1);
    EXPECT_EQ(info.value(QStringLiteral("trash")).toInt(), 0);
    EXPECT_EQ(info.value(QStringLiteral("tags")).toInt(), 0);

    // Any SQLite tool can read it, and nothing but the library's own entries is left behind.
    EXPECT_EQ(QDir(lib).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
              QStringList({"docs", "mainlib.db"}));
    FMDatabase db(lib + QStringLiteral("/mainlib.db"));
    ASSERT_TRUE(db.openWithFlags(FMDatabase::OpenReadOnly));
    FMResultSet rs = db.executeQuery(QStringLiteral("PRAGMA integrity_check"));
    ASSERT_TRUE(rs.next());
    EXPECT_EQ(rs.stringForColumn(0), QStringLiteral("ok"));
    FMResultSet cat = db.executeQuery(QStringLiteral("SELECT name, catType, sort, pid FROM cat"));
    ASSERT_TRUE(cat.next());
    EXPECT_EQ(cat.stringForColumn(0), QStringLiteral("Orvo"));
    EXPECT_EQ(cat.intForColumn(1), 12);
    EXPECT_EQ(cat.intForColumn(2), 10);
    EXPECT_EQ(cat.intForColumn(3), 0);
}

TEST_F(Cli, InitRefusesALibraryAndWithForceSendsOnlyTheDatabaseToTheTrash)
{
    ASSERT_EQ(orvo({"library", "init", lib}).code, 0);
    const auto before = snapshot(lib);
    const Run again = orvo({"library", "init", lib});
    EXPECT_EQ(again.code, 1);
    EXPECT_TRUE(again.err.contains(lib + QStringLiteral(" is a library already")));
    EXPECT_EQ(snapshot(lib), before);

    const QByteArray oldDatabase = orvotest::readFile(lib + QStringLiteral("/mainlib.db"));
    ASSERT_EQ(orvo({"library", "init", lib, "--force"}).code, 0);
    const QDir trash(home.filePath(QStringLiteral(".local/share/Trash/files")));
    bool trashed = false;
    for (const QString &name : trash.entryList(QDir::Files))
        trashed = trashed || orvotest::readFile(trash.filePath(name)) == oldDatabase;
    EXPECT_TRUE(trashed);
    // The earlier welcome document stays and comes back, uncategorized.
    const QJsonArray list = docList(lib);
    EXPECT_EQ(list.size(), 2);
    const QJsonObject info = json({"library", "info", "--json"}).toObject();
    EXPECT_EQ(info.value(QStringLiteral("uncategorized")).toInt(), 1);
}

TEST_F(Cli, NewDocumentsGoIntoTheirCategoryAndBadOnesWriteNothing)
{
    ASSERT_EQ(orvo({"library", "init", lib}).code, 0);
    const qint64 orvoCat =
        json({"library", "info", "--json"}).toObject().value(QStringLiteral("categoryTree")).toArray().first().toObject().value(QStringLiteral("uuid")).toInteger();

    const QJsonObject made =
        json({"doc", "new", "--title", "Über den Garten", "--cat", QString::number(orvoCat), "--json"}).toObject();
    const qint64 uuid = made.value(QStringLiteral("uuid")).toInteger();
    EXPECT_EQ(orvotest::readFile(made.value(QStringLiteral("path")).toString()), QStringLiteral("# Über den Garten\n").toUtf8());
    const QJsonObject plain = json({"doc", "new", "--json"}).toObject();
    EXPECT_EQ(orvotest::readFile(plain.value(QStringLiteral("path")).toString()), QByteArray("# "));

    const QJsonArray list = docList(lib);
    ASSERT_EQ(list.size(), 3);
    bool found = false;
    for (const QJsonValue &v : list) {
        const QJsonObject d = v.toObject();
        if (d.value(QStringLiteral("uuid")).toInteger() != uuid)
            continue;
        found = true;
        EXPECT_EQ(d.value(QStringLiteral("title")).toString(), QStringLiteral("Über den Garten"));
        EXPECT_EQ(d.value(QStringLiteral("categories")).toArray().first().toObject().value(QStringLiteral("uuid")).toInteger(),
                  orvoCat);
    }
    EXPECT_TRUE(found);
    EXPECT_EQ(json({"library", "info", "--json"}).toObject().value(QStringLiteral("uncategorized")).toInt(), 1);

    const auto before = snapshot(lib);
    const Run missingCat = orvo({"doc", "new", "--cat", "1234"});
    EXPECT_EQ(missingCat.code, 1);
    EXPECT_TRUE(missingCat.err.contains(QStringLiteral("has no category 1234")));
    EXPECT_EQ(orvo({"doc", "new", "--cat", "twelve"}).code, 2);
    EXPECT_EQ(snapshot(lib), before);
}

TEST_F(Cli, AnUnusableDatabaseIsNamedWithItsReasonAndLeftAsItWas)
{
    struct Case {
        const char *what;
        QByteArray content;
        bool schemaWithoutTags;
        QString reason;
    };
    const QList<Case> cases = {
        {"text", QByteArray("these are my notes, not a database\n"), false, QStringLiteral("mainlib.db is not a SQLite database")},
        {"empty", QByteArray(), false, QStringLiteral("mainlib.db lacks the table \"cat\"")},
        {"incomplete", QByteArray(), true, QStringLiteral("mainlib.db lacks the table \"tag\"")},
    };
    for (const Case &c : cases) {
        const QString dir = home.filePath(QString::fromLatin1(c.what));
        QDir().mkpath(dir + QStringLiteral("/docs"));
        ASSERT_TRUE(orvotest::writeFile(dir + QStringLiteral("/docs/17000000001234.md"), "# kept"));
        if (c.schemaWithoutTags) {
            FMDatabase db(dir + QStringLiteral("/mainlib.db"));
            ASSERT_TRUE(db.open());
            ASSERT_TRUE(db.executeStatements(ORVDBManager::schemaStatement().replace(
                QStringLiteral("CREATE TABLE tag (id INTEGER primary key autoincrement, name TEXT);"), QString())));
        } else {
            ASSERT_TRUE(orvotest::writeFile(dir + QStringLiteral("/mainlib.db"), c.content));
        }
        const auto before = snapshot(dir);
        for (const QStringList &command : {QStringList{"doc", "list"}, QStringList{"doc", "new", "--title", "x"},
                                           QStringList{"library", "info"}}) {
            const Run r = orvo(QStringList{"--library", dir} + command);
            EXPECT_EQ(r.code, 1) << c.what << ' ' << qPrintable(command.join(' '));
            EXPECT_EQ(r.err.trimmed(), QStringLiteral("orvo: the library %1 is unusable: %2").arg(dir, c.reason))
                << c.what;
            EXPECT_EQ(snapshot(dir), before) << c.what << ' ' << qPrintable(command.join(' '));
        }
        const QJsonObject info = QJsonDocument::fromJson(orvo({"--library", dir, "library", "info", "--json"}).out.toUtf8()).object();
        EXPECT_FALSE(info.value(QStringLiteral("valid")).toBool(true));
    }

    const Run notALibrary = orvo({"--library", home.path(), "doc", "list"});
    EXPECT_EQ(notALibrary.code, 1);
    EXPECT_TRUE(notALibrary.err.contains(QStringLiteral("is not a library: it has no mainlib.db")));
}

TEST_F(Cli, FilesCopiedIntoDocsJoinTheListUncategorized)
{
    ASSERT_EQ(orvo({"library", "init", lib}).code, 0);
    ASSERT_TRUE(orvotest::writeFile(lib + QStringLiteral("/docs/17000000001234.md"), "# Synced from elsewhere\n\nBody."));
    ASSERT_TRUE(orvotest::writeFile(lib + QStringLiteral("/docs/99.md"), "# Too small a number"));
    const QJsonArray list = docList(lib);
    ASSERT_EQ(list.size(), 2);
    QStringList titles;
    for (const QJsonValue &v : list)
        titles << v.toObject().value(QStringLiteral("title")).toString();
    EXPECT_TRUE(titles.contains(QStringLiteral("Synced from elsewhere")));
    EXPECT_EQ(json({"library", "info", "--json"}).toObject().value(QStringLiteral("uncategorized")).toInt(), 1);
}

TEST_F(Cli, SettingsTravelThroughAFileAndForeignFilesChangeNothing)
{
    ASSERT_EQ(orvo({"prefs", "set", "editorThemeName", "Mine"}).code, 0);
    ASSERT_EQ(orvo({"prefs", "set", "editorLineSpacing", "9"}).code, 0);
    const QString file = home.filePath(QStringLiteral("all.orvoSettingData"));
    const Run exported = orvo({"settings", "export", file});
    ASSERT_EQ(exported.code, 0) << qPrintable(exported.err);
    EXPECT_FALSE(orvotest::readFile(file).contains("Mine"));

    ASSERT_EQ(orvo({"prefs", "set", "editorThemeName", "Other"}).code, 0);
    ASSERT_EQ(orvo({"prefs", "set", "editorLineSpacing", "2"}).code, 0);
    const Run imported = orvo({"settings", "import", file});
    ASSERT_EQ(imported.code, 0) << qPrintable(imported.err);
    EXPECT_EQ(orvo({"prefs", "get", "editorThemeName"}).out.trimmed(), QStringLiteral("Mine"));
    EXPECT_EQ(orvo({"prefs", "get", "editorLineSpacing"}).out.trimmed(), QStringLiteral("9"));

    ASSERT_EQ(orvo({"prefs", "set", "editorThemeName", "Other"}).code, 0);
    const QString foreign = home.filePath(QStringLiteral("foreign.orvoSettingData"));
    QByteArray scrambled = orvotest::readFile(file);
    scrambled[0] = char(scrambled[0] ^ 0x5a); // as if another key had made it
    for (const QByteArray &content : {scrambled, QByteArray("not a settings file at all")}) {
        ASSERT_TRUE(orvotest::writeFile(foreign, content));
        const Run r = orvo({"settings", "import", foreign});
        EXPECT_EQ(r.code, 1);
        EXPECT_TRUE(r.err.contains(QStringLiteral("found nothing to import")));
        EXPECT_EQ(orvo({"prefs", "get", "editorThemeName"}).out.trimmed(), QStringLiteral("Other"));
    }
}

TEST_F(Cli, PreferencesRefuseAValueOfTheWrongType)
{
    const Run r = orvo({"prefs", "set", "editorLineSpacing", "wide"});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.err.contains(QStringLiteral("expects an integer")));
    const Run b = orvo({"prefs", "set", "isRenderTOC", "maybe"});
    EXPECT_EQ(b.code, 1);
    EXPECT_TRUE(b.err.contains(QStringLiteral("boolean")));
    EXPECT_EQ(orvo({"prefs", "get", "isRenderTOC"}).out.trimmed(), QStringLiteral("true"));
}
