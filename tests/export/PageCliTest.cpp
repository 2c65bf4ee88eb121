// `orvo page` and `orvo export html` on real files.
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

struct Result {
    int code;
    QString out;
    QString err;
};

Result orvo(const QStringList &args)
{
    QByteArray out, err;
    const int code = orvotest::runOrvo(args, &out, &err);
    return {code, QString::fromUtf8(out), QString::fromUtf8(err)};
}

} // namespace

TEST(PageCommand, PrintsThePreviewAndExportForms)
{
    QTemporaryDir dir;
    const QString md = dir.filePath(QStringLiteral("My Note.md"));
    orvotest::writeFile(md, "---\ntitle: x\n---\n# Heading\n\n![pic](a%20b.png) $$x$$\n");
    orvotest::writeFile(dir.filePath(QStringLiteral("a b.png")), "PNG");

    const Result preview = orvo({QStringLiteral("page"), md});
    ASSERT_EQ(preview.code, 0) << preview.err.toStdString();
    EXPECT_TRUE(preview.out.contains(QStringLiteral("<title>My Note</title>")));
    EXPECT_TRUE(preview.out.contains(QStringLiteral("<link rel=\"stylesheet\"")));
    EXPECT_TRUE(preview.out.contains(QStringLiteral("orvo-default.css")));
    EXPECT_TRUE(preview.out.contains(QStringLiteral("language-yaml")));
    EXPECT_TRUE(preview.out.contains(QStringLiteral("theOrvoMathJaxRenderIsReady")));
    EXPECT_TRUE(preview.out.contains(QStringLiteral("src=\"a%20b.png\"")));

    const Result exported = orvo({QStringLiteral("page"), md, QStringLiteral("--export"), QStringLiteral("--style"), QStringLiteral("orvo-github")});
    ASSERT_EQ(exported.code, 0);
    EXPECT_TRUE(exported.out.contains(QStringLiteral("<style>\n/* GitHub")));
    EXPECT_TRUE(exported.out.contains(QStringLiteral("src=\"data:image/png;base64,UE5H\""))) << "images beside the file are embedded";
    EXPECT_TRUE(exported.out.contains(QStringLiteral("https://cdnjs.cloudflare.com/ajax/libs/mathjax/2.7.7/")));

    const Result note = orvo({QStringLiteral("page"), md, QStringLiteral("--evernote")});
    ASSERT_EQ(note.code, 0);
    EXPECT_TRUE(note.out.contains(QStringLiteral("theOrvoToEvernoteHtmlString")));

    EXPECT_EQ(orvo({QStringLiteral("page"), md, QStringLiteral("--export"), QStringLiteral("--wechat")}).code, 2);
    const Result missing = orvo({QStringLiteral("page"), dir.filePath(QStringLiteral("nope.md"))});
    EXPECT_EQ(missing.code, 1);
    EXPECT_TRUE(missing.err.startsWith(QStringLiteral("orvo: "))) << missing.err.toStdString();
    EXPECT_EQ(orvo({QStringLiteral("help"), QStringLiteral("page")}).code, 0);
}

TEST(ExportCommand, WritesTheWholePageOrNothing)
{
    QTemporaryDir dir;
    const QString md = dir.filePath(QStringLiteral("doc.md"));
    orvotest::writeFile(md, "# Title\n\ntext\n");
    const QString out = dir.filePath(QStringLiteral("out.html"));
    const Result ok = orvo({QStringLiteral("export"), QStringLiteral("html"), md, QStringLiteral("-o"), out});
    ASSERT_EQ(ok.code, 0) << ok.err.toStdString();
    const QByteArray page = orvotest::readFile(out);
    EXPECT_TRUE(page.startsWith("<!DOCTYPE html>"));
    EXPECT_TRUE(page.contains("<h1 id=\"toc_0\">Title</h1>"));
    EXPECT_TRUE(page.contains("<style>"));

    orvotest::writeFile(out, "previous");
    QDir(dir.path()).mkdir(QStringLiteral("locked"));
    QFile::setPermissions(dir.filePath(QStringLiteral("locked")), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    const QString blocked = dir.filePath(QStringLiteral("locked/out.html"));
    const Result fail = orvo({QStringLiteral("export"), QStringLiteral("html"), md, QStringLiteral("--output"), blocked});
    if (QFile::exists(blocked)) // running as root, permissions do not hold
        GTEST_SKIP() << "permissions are not enforced for this user";
    EXPECT_EQ(fail.code, 1);
    EXPECT_TRUE(fail.err.startsWith(QStringLiteral("orvo: Error: "))) << fail.err.toStdString();
    EXPECT_EQ(orvo({QStringLiteral("export"), QStringLiteral("html"), md}).code, 2) << "-o is required";
    EXPECT_EQ(orvo({QStringLiteral("export"), QStringLiteral("pdf"), md}).code, 2);
}
