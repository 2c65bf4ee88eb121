#include "export/ORVPreviewRenderer.h"

#include <gtest/gtest.h>

#include <QSignalSpy>

TEST(PreviewRenderer, SplitsPagesAndCoalescesBursts)
{
    ORVPreviewRequest request;
    request.preferences.previewCSSName = QStringLiteral("none");
    request.markdown = QStringLiteral("# One");
    const ORVPreviewPage page = ORVPreviewRenderer::renderPage(request, 7);
    EXPECT_EQ(page.generation, 7u);
    EXPECT_TRUE(page.body.startsWith(QStringLiteral("<h1")));
    EXPECT_TRUE(page.body.endsWith(QStringLiteral("<br /><br />")));
    const qsizetype at = page.page.indexOf(page.body);
    EXPECT_EQ(page.shell, page.page.left(at) + page.page.mid(at + page.body.size())) << "the shell is the page without its body";
    EXPECT_FALSE(ORVPreviewPage::split(QStringLiteral("<html>not ours</html>")).has_value());

    ORVPreviewRenderer renderer;
    QSignalSpy ready(&renderer, &ORVPreviewRenderer::pageReady);
    QList<quint64> generations;
    for (int i = 0; i < 20; ++i) {
        request.markdown = QStringLiteral("# Heading %1").arg(i);
        generations << renderer.requestRender(request);
    }
    EXPECT_TRUE(renderer.isRendering());
    EXPECT_TRUE(renderer.hasPendingRequest());
    while (renderer.isRendering() || renderer.hasPendingRequest())
        ASSERT_TRUE(ready.wait(10000));
    ASSERT_EQ(ready.count(), 2) << "the first request, then the newest: the 18 between never render";
    const auto first = ready.at(0).at(0).value<ORVPreviewPage>();
    const auto last = ready.at(1).at(0).value<ORVPreviewPage>();
    EXPECT_EQ(first.generation, generations.first());
    EXPECT_EQ(last.generation, generations.last());
    EXPECT_TRUE(last.body.contains(QStringLiteral("Heading 19")));
}

TEST(PreviewRenderer, CutsBodiesIntoBlocksThePageCanReplaceAlone)
{
    struct Case {
        const char *name;
        QString html;
        QStringList blocks;
    };
    const QList<Case> cases = {
        {"one block per line at the top", QStringLiteral("<h1>A</h1>\n<p>b\nc</p>\n"),
         {QStringLiteral("<h1>A</h1>\n"), QStringLiteral("<p>b\nc</p>\n")}},
        {"nested lists stay whole", QStringLiteral("<ul>\n<li>a\n<ul>\n<li>b</li>\n</ul></li>\n</ul>\n<p>x</p>"),
         {QStringLiteral("<ul>\n<li>a\n<ul>\n<li>b</li>\n</ul></li>\n</ul>\n"), QStringLiteral("<p>x</p>")}},
        {"blank lines inside code are code",
         QStringLiteral("<pre><code>a\n\n<b>\n\nc</code></pre>\n"), {QStringLiteral("<pre><code>a\n\n<b>\n\nc</code></pre>\n")}},
        {"script text is not markup", QStringLiteral("<script>if (a<b) '</p>\n'</script>\n<p>x</p>\n"),
         {QStringLiteral("<script>if (a<b) '</p>\n'</script>\n"), QStringLiteral("<p>x</p>\n")}},
        {"void elements, quoted \">\" and comments",
         QStringLiteral("<p><img alt=\"a>b\"><br>x<!-- <div>\n --></p>\n<hr>\n"),
         {QStringLiteral("<p><img alt=\"a>b\"><br>x<!-- <div>\n --></p>\n"), QStringLiteral("<hr>\n")}},
        {"an element left open ends at a blank line", QStringLiteral("<i32> text\n\n<p>a</p>\n<p>b</p>\n"),
         {QStringLiteral("<i32> text\n\n"), QStringLiteral("<p>a</p>\n"), QStringLiteral("<p>b</p>\n")}},
    };
    for (const Case &c : cases) {
        const QStringList blocks = ORVPreviewPage::topLevelBlocks(c.html);
        EXPECT_EQ(blocks, c.blocks) << c.name;
        EXPECT_EQ(blocks.join(QString()), c.html) << c.name << ": nothing is lost or doubled";
    }

    EXPECT_TRUE(ORVPreviewPage::isBalanced(QStringLiteral("<p>a<br><em>b</em></p>\n")));
    EXPECT_FALSE(ORVPreviewPage::isBalanced(QStringLiteral("<div>\n"))) << "opens what a later block closes";
    EXPECT_FALSE(ORVPreviewPage::isBalanced(QStringLiteral("</div>\n<p>a</p>\n"))) << "closes an earlier block's element";
    EXPECT_FALSE(ORVPreviewPage::isBalanced(QStringLiteral("<i32> text\n\n")));
}
