// The editor window: the text view and its preview together, and the scroll
// sync mapping between them.
#include "WritingTestSupport.h"
#include "app/ORVEditorWindow.h"
#include "app/ORVLivePreviewView.h"
#include "app/ORVMDTextView.h"
#include "app/ORVScrollSync.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QTest>

using writingtest::runJavaScript;
using writingtest::waitFor;

TEST(ScrollSync, SectionsOfTheEditorMapToThePage)
{
    const QList<HGOutlineItem> outline = {{1, 0, 2, QStringLiteral("a")}, {2, 0, 10, QStringLiteral("b")},
                                          {2, 0, 20, QStringLiteral("c")}};
    const struct {
        int top;
        double within;
        int section;
        double fraction;
    } cases[] = {{0, 0, -1, 0}, {1, 0, -1, 0.5}, {2, 0, 0, 0}, {6, 0, 0, 0.5}, {9, 0.5, 0, 0.9375}, {25, 0, 2, 0.5}, {30, 0, 2, 1}};
    for (const auto &c : cases) {
        const auto t = ORVScrollSyncTarget::forEditorPosition(outline, c.top, c.within, 30);
        EXPECT_EQ(t.sectionIndex, c.section) << c.top;
        EXPECT_NEAR(t.fraction, c.fraction, 1e-9) << c.top;
        EXPECT_EQ(t.headingCount, 3);
    }
    const auto none = ORVScrollSyncTarget::forEditorPosition({}, 15, 0, 30);
    EXPECT_EQ(none.sectionIndex, -1);
    EXPECT_NEAR(none.documentFraction, 0.5, 1e-9);
}

TEST(EditorWindow, TypedTextReachesThePreviewAndTheFile)
{
    QTemporaryDir dir;
    AppDelegate *app = AppDelegate::sharedDelegate();
    const QString path = dir.filePath(QStringLiteral("draft.md"));
    orvotest::writeFile(path, "# Draft\n\nFirst paragraph.\n");
    ORVEditorWindow window(app, path);
    window.show();
    ASSERT_TRUE(waitFor([&] { return window.previewView()->isIdle() && window.previewView()->shellLoadCount() == 1; }));
    EXPECT_TRUE(runJavaScript(window.previewView()->page(), QStringLiteral("orvoPreview.bodyHTML()")).toString().contains(QStringLiteral("First paragraph.")));
    EXPECT_TRUE(window.messageText().isEmpty()) << window.messageText().toStdString();

    window.textView()->setFocus();
    window.textView()->moveCursor(QTextCursor::End);
    QTest::keyClicks(window.textView(), QStringLiteral("Second *paragraph*."));
    ASSERT_TRUE(waitFor([&] {
        return window.previewView()->isIdle() &&
               runJavaScript(window.previewView()->page(), QStringLiteral("orvoPreview.bodyHTML()")).toString().contains(QStringLiteral("Second <em>paragraph</em>."));
    }));
    EXPECT_TRUE(window.isWindowModified());
    ASSERT_TRUE(window.saveDocument());
    EXPECT_EQ(orvotest::readFile(path), QByteArray("# Draft\n\nFirst paragraph.\nSecond *paragraph*."));
    EXPECT_FALSE(window.isWindowModified());

    const QString html = dir.filePath(QStringLiteral("draft.html"));
    ASSERT_TRUE(window.exportHTMLTo(html));
    EXPECT_TRUE(orvotest::readFile(html).contains("<title>draft</title>"));
}

TEST(EditorWindow, UnreadableFileAndThemeFaultsShowInTheWindow)
{
    MyPreferences::sharedInstance()->setEditorThemeName(QStringLiteral("no-such-theme"));
    ORVEditorWindow window(AppDelegate::sharedDelegate(), QStringLiteral("/nonexistent/file.md"));
    EXPECT_TRUE(window.messageText().contains(QStringLiteral("Cannot open /nonexistent/file.md"))) << window.messageText().toStdString();
    EXPECT_TRUE(window.messageText().contains(QStringLiteral("Editor theme 'no-such-theme' was not found")));
    MyPreferences::sharedInstance()->setEditorThemeName(QStringLiteral("solarized-light"));
    ORVEditorWindow fine(AppDelegate::sharedDelegate());
    EXPECT_TRUE(fine.messageText().isEmpty());
    EXPECT_TRUE(fine.document()->fileURL().isEmpty());
}
