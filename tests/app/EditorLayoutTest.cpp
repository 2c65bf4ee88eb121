// What a writer sees first when a document opens: its first line at the top
// of the editor, and the editor and the preview side by side at equal width.

#include "ShellTestSupport.h"

#include "app/ORVEditorArea.h"
#include "app/ORVEditorTab.h"
#include "app/ORVEditorWindow.h"
#include "app/ORVLivePreviewView.h"
#include "app/ORVMDTextView.h"
#include "core/AppDelegate.h"
#include "highlight/HGMarkdownHighlighter.h"
#include "support/TestEnv.h"

#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace shelltest;

namespace {

// A heading, a blank line, then enough paragraphs to need scrolling: a view
// that may scroll at all is one that can open scrolled.
QByteArray longDocument()
{
    QByteArray text = "# Welcome to Orvo!\n\nThe first paragraph under the title.\n\n";
    for (int i = 0; i < 120; ++i)
        text += "## Section " + QByteArray::number(i) + "\n\nSome words of section " + QByteArray::number(i) + ".\n\n";
    return text;
}

// The view shows block 0 from its top: nothing of it is scrolled away.
void expectShowsTheFirstLine(ORVMDTextView *view)
{
    EXPECT_EQ(view->verticalScrollBar()->value(), 0);
    EXPECT_EQ(view->topVisibleBlockNumber(), 0);
    EXPECT_DOUBLE_EQ(view->topVisibleBlockFraction(), 0.0);
    const QTextBlock first = view->document()->firstBlock();
    EXPECT_GE(view->cursorRect(QTextCursor(first)).top(), 0);
}

} // namespace

TEST(EditorLayoutTest, OpenedDocumentShowsItsFirstLineAtTheTop)
{
    LibraryFixture fixture;
    const QString path = fixture.dir.filePath(QStringLiteral("welcome.md"));
    orvotest::writeFile(path, longDocument());

    // As the library window does: the tab is made while its window is still
    // hidden, then the window comes up at its full size.
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *area = new ORVEditorArea(fixture.app, &window);
    layout->addWidget(area);
    ORVEditorTab *tab = area->openDocument(path, true);
    ASSERT_NE(tab, nullptr);
    window.resize(1300, 820);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    ASSERT_TRUE(waitFor([&] { return !tab->textView()->highlighter()->docOutline().isEmpty(); }));
    expectShowsTheFirstLine(tab->textView());

    // A second document opened into the shown window starts at its top too.
    const QString other = fixture.dir.filePath(QStringLiteral("other.md"));
    orvotest::writeFile(other, longDocument());
    ORVEditorTab *second = area->openDocument(other, true);
    ASSERT_TRUE(waitFor([&] { return !second->textView()->highlighter()->docOutline().isEmpty(); }));
    expectShowsTheFirstLine(second->textView());
}

TEST(EditorLayoutTest, EditorWindowSharesItsWidthBetweenTextAndPreview)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("draft.md"));
    orvotest::writeFile(path, longDocument());
    ORVEditorWindow window(AppDelegate::sharedDelegate(), path);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    ASSERT_TRUE(waitFor([&] { return !window.textView()->highlighter()->docOutline().isEmpty(); }));
    const int text = window.textView()->parentWidget()->width();
    const int preview = window.previewView()->width();
    EXPECT_GT(preview, window.width() / 3);
    EXPECT_LE(std::abs(text - preview), 12) << text << " against " << preview;
    expectShowsTheFirstLine(window.textView());
}
