// `orvo render`: the fragment on stdout, the switches over the preferences,
// --info on stderr, --toc-only, and the errors.
#include "support/TestEnv.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QByteArray kText = "[TOC]\n\n# Title\n\n\"Quote\" line\nnext $x$\n\n```mermaid\ng\n```\n";

TEST(CliRender, RendersFilesAndStandardInputWithThePreferences)
{
    QTemporaryDir dir;
    const QString file = dir.path() + QStringLiteral("/doc.md");
    ASSERT_TRUE(orvotest::writeFile(file, kText));

    QByteArray out, err;
    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), file}, &out, &err), 0) << err.constData();
    // First-run preferences: table of contents, line breaks, math; no
    // typographic replacement.
    EXPECT_TRUE(out.startsWith("<ul>\n<li>\n<a href=\"#toc_0\">Title</a>"));
    EXPECT_TRUE(out.contains("<p>&quot;Quote&quot; line<br/>\nnext \\(x\\)</p>"));
    EXPECT_TRUE(err.isEmpty());

    QByteArray piped;
    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("-")}, &piped, nullptr, kText), 0);
    EXPECT_EQ(piped, out);

    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("prefs"), QStringLiteral("set"), QStringLiteral("isSmartypants"),
                                 QStringLiteral("true")}),
              0);
    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), file}, &out), 0);
    EXPECT_TRUE(out.contains("&ldquo;Quote&rdquo;"));
    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), file, QStringLiteral("--no-smartypants"),
                                 QStringLiteral("--no-toc"), QStringLiteral("--no-newline-br"),
                                 QStringLiteral("--no-math")},
                                &out),
              0);
    EXPECT_EQ(out, "<p>[TOC]</p>\n\n<h1>Title</h1>\n<p>&quot;Quote&quot; line\nnext $x$</p>\n\n"
                   "<pre><code class=\"language-mermaid\">g\n</code></pre>\n");
}

TEST(CliRender, TypesInfoAndTableOfContentsAlone)
{
    QByteArray out, err;
    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("--type"), QStringLiteral("1"),
                                 QStringLiteral("--info")},
                                &out, &err, kText),
              0);
    EXPECT_TRUE(out.startsWith("<div style=\"padding:8px;\"><div class=\"orvo-toc\">"));
    const QJsonObject info = QJsonDocument::fromJson(err).object();
    EXPECT_EQ(info.size(), 7);
    EXPECT_TRUE(info.value(QStringLiteral("isChartMermaid")).toBool());
    EXPECT_TRUE(info.value(QStringLiteral("isHaveCodeBlock")).toBool());
    EXPECT_TRUE(info.value(QStringLiteral("isHaveLaTeX")).toBool());
    EXPECT_FALSE(info.value(QStringLiteral("isChartVIZ")).toBool());

    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("--toc-only")}, &out, nullptr,
                                "# A\n## ~~B~~\n"),
              0);
    EXPECT_EQ(out, "<ul>\n<li>\n<a href=\"#toc_0\">A</a>\n<ul>\n<li>\n<a href=\"#toc_1\"><del>B</del></a>\n</li>\n"
                   "</ul>\n</li>\n</ul>\n");
}

TEST(CliRender, RefusesBadUsageAndMissingFiles)
{
    QByteArray err;
    EXPECT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("--type"), QStringLiteral("8")}, nullptr,
                                &err, "x"),
              2);
    EXPECT_TRUE(err.startsWith("orvo: --type takes a render type from 0 to 7"));
    EXPECT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("--toc"), QStringLiteral("--no-toc")},
                                nullptr, &err, "x"),
              2);
    EXPECT_EQ(orvotest::runOrvo({QStringLiteral("render"), QStringLiteral("/nonexistent/doc.md")}, nullptr, &err), 1);
    EXPECT_TRUE(err.startsWith("orvo: cannot read /nonexistent/doc.md"));
}

} // namespace
