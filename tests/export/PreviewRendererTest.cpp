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
