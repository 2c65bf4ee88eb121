// The Markdown text view as a writer uses it: typing and keys, shortcuts,
// colours from the theme, the document binding, find and replace, and a
// large document.
#include "WritingTestSupport.h"
#include "app/ORVFindBar.h"
#include "app/ORVMDTextView.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "editor/ORVDocument.h"
#include "highlight/HGMarkdownHighlighter.h"
#include "support/TestEnv.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

using writingtest::waitFor;

namespace {

void waitForStyles(ORVMDTextView &view)
{
    HGMarkdownHighlighter *h = view.highlighter();
    ASSERT_TRUE(waitFor([h] { return h->isFirstPassDone() && !h->isParsing() && !h->isUpdateTimerActive(); }));
}

QColor foregroundAt(ORVMDTextView &view, int blockNumber, int column)
{
    const QTextBlock block = view.document()->findBlockByNumber(blockNumber);
    QColor colour;
    for (const QTextLayout::FormatRange &f : block.layout()->formats()) {
        if (column >= f.start && column < f.start + f.length && f.format.hasProperty(QTextFormat::ForegroundBrush))
            colour = f.format.foreground().color();
    }
    return colour;
}

// Shortcuts reach a focused widget of the active window.
void showActive(QWidget &w)
{
    w.show();
    w.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&w));
    w.setFocus();
}

struct App {
    App() : prefs(home.filePath(QStringLiteral("Orvo.conf"))), app(&prefs, home.filePath(QStringLiteral("support"))) {}
    QTemporaryDir home;
    MyPreferences prefs;
    AppDelegate app;
};

} // namespace

TEST(EditorView, TypingRunsTheCommandsAndUndoesInSteps)
{
    ORVMDTextView view;
    view.resize(700, 500);
    view.show();
    QTest::keyClicks(&view, QStringLiteral("# Title"));
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClicks(&view, QStringLiteral("1. one"));
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClicks(&view, QStringLiteral("two"));
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClicks(&view, QStringLiteral("> quoted"));
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_EQ(view.markdownText(), QStringLiteral("# Title\n1. one\n2. two\n3. > quoted\n4. ")) << "the list wins over the quote";
    QTest::keyClick(&view, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(view.markdownText(), QStringLiteral("# Title\n1. one\n2. two\n3. > quoted")) << "Return and its marker undo as one";
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClick(&view, Qt::Key_Return); // an empty item ends the list
    QTest::keyClicks(&view, QStringLiteral("\tx"));
    EXPECT_EQ(view.markdownText().toStdString(), "# Title\n1. one\n2. two\n3. > quoted\n\n    x") << "Tab inserts spaces";
    QTest::keyClick(&view, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_TRUE(view.markdownText().endsWith(QStringLiteral("    x\n"))) << "Shift+Return: a plain line end";
    EXPECT_EQ(view.textBuffer().resyncCount(), 0) << "every edit was followed without rebuilding the text";
}

TEST(EditorView, InsertedLineEndsKeepTextAndStorageInStep)
{
    App a;
    ORVDocument doc(&a.app);
    doc.textStorage()->setString(QStringLiteral("start\nend"));
    ORVMDTextView view;
    view.show();
    view.bindDocument(&doc);
    const int resyncsOfLoading = view.textBuffer().resyncCount();
    QTextCursor c = view.textCursor();
    c.setPosition(5);
    view.setTextCursor(c);
    // Text from outside (a dialog, the clipboard of another system) with
    // every spelling of a line end, alone and inside a grouped command.
    view.commands().orv_insertTextToCurrentSelectRange(QStringLiteral("\r\na\rb\u2029c\r\n"));
    const QString expected = QStringLiteral("start\na\nb\nc\n\nend");
    EXPECT_EQ(view.markdownText(), expected);
    EXPECT_EQ(view.toPlainText(), expected);
    EXPECT_EQ(doc.textStorage()->string(), expected);
    EXPECT_EQ(view.textBuffer().selectedRange(), ORVEditRange(12, 0)) << "the caret follows the stored text";

    view.textBuffer().beginUndoGrouping();
    view.textBuffer().replaceCharactersInRange({0, 5}, QStringLiteral("x\r\ny"));
    view.textBuffer().replaceCharactersInRange({0, 0}, QStringLiteral("> "));
    view.textBuffer().endUndoGrouping();
    EXPECT_EQ(view.markdownText(), QStringLiteral("> x\ny\na\nb\nc\n\nend"));
    EXPECT_EQ(doc.textStorage()->string(), view.markdownText());
    view.undo();
    EXPECT_EQ(view.markdownText(), expected);
    EXPECT_EQ(doc.textStorage()->string(), expected);
    EXPECT_EQ(view.textBuffer().resyncCount(), resyncsOfLoading) << "no edit needed the text read back";
}

TEST(EditorView, ShortcutsAndListKeys)
{
    ORVMDTextView view;
    showActive(view);
    view.setPlainText(QStringLiteral("word"));
    view.selectAll();
    QTest::keyClick(&view, Qt::Key_B, Qt::ControlModifier);
    EXPECT_EQ(view.markdownText(), QStringLiteral("**word**"));
    QTest::keyClick(&view, Qt::Key_K, Qt::ControlModifier);
    EXPECT_EQ(view.markdownText(), QStringLiteral("**[word]()**")) << "Ctrl+K is the link, not delete-to-end";
    QTest::keyClick(&view, Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(view.markdownText(), QStringLiteral("## **[word]()**"));

    view.setPlainText(QStringLiteral("1. a\n2. b\n3. c"));
    QTextCursor c = view.textCursor();
    c.setPosition(9); // end of "2. b"
    view.setTextCursor(c);
    QTest::keyClick(&view, Qt::Key_Tab);
    EXPECT_EQ(view.markdownText(), QStringLiteral("1. a\n    1. b\n2. c")) << "Tab nests the item and renumbers";
    QTest::keyClick(&view, Qt::Key_Backtab);
    EXPECT_EQ(view.markdownText(), QStringLiteral("1. a\n2. b\n3. c"));
    c = view.textCursor();
    c.setPosition(5);
    c.setPosition(10, QTextCursor::KeepAnchor);
    view.setTextCursor(c);
    QTest::keyClick(&view, Qt::Key_Backspace);
    EXPECT_EQ(view.markdownText(), QStringLiteral("1. a\n2. c")) << "deleting an item renumbers the rest";
}

TEST(EditorView, HeadingTakesTheThemeColour)
{
    ORVMDTextView view;
    view.show();
    view.setPlainText(QStringLiteral("# Title\n\nbody *em*"));
    waitForStyles(view);
    const HGStyleAttributes *h1 = view.currentTheme().sheet.attributesForType(pmh_H1);
    ASSERT_NE(h1, nullptr);
    EXPECT_EQ(view.currentTheme().name, MyPreferences::sharedInstance()->editorThemeName());
    EXPECT_TRUE(view.currentTheme().errors.isEmpty());
    EXPECT_EQ(foregroundAt(view, 0, 3), h1->foreground);
    EXPECT_EQ(foregroundAt(view, 2, 6), view.currentTheme().sheet.attributesForType(pmh_EMPH)->foreground);
    EXPECT_EQ(view.palette().color(QPalette::Base), view.currentTheme().sheet.editor.background);

    // Typing a heading mark colours the line once typing pauses.
    view.moveCursor(QTextCursor::End);
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClicks(&view, QStringLiteral("## Two"));
    ASSERT_TRUE(waitFor([&] { return foregroundAt(view, 3, 4) == view.currentTheme().sheet.attributesForType(pmh_H2)->foreground; }));
}

TEST(EditorView, ABrokenThemeShowsItsFaultsAndFallsBack)
{
    orvotest::writeFile(ORVAppPaths::applicationThemesDirectoryEditorThemes() + QStringLiteral("/broken.style"),
                        "H1\ncolor: notacolour\nEMPH\n  colour 00ff00\n");
    ORVMDTextView view;
    QSignalSpy failed(&view, &ORVMDTextView::themeDidFail);
    MyPreferences::sharedInstance()->setEditorThemeName(QStringLiteral("broken"));
    ASSERT_EQ(failed.count(), 1) << "the preference change applies at once";
    const auto theme = failed.at(0).at(0).value<HGEditorThemes::LoadedTheme>();
    EXPECT_TRUE(theme.fellBackToDefault);
    ASSERT_EQ(theme.errors.size(), 2);
    EXPECT_EQ(theme.errors.at(0).message, QStringLiteral("Invalid color value 'notacolour' for attribute 'color'"));
    EXPECT_EQ(view.palette().color(QPalette::Base), HGEditorThemes::defaultStyleSheet().editor.background);
    MyPreferences::sharedInstance()->setEditorThemeName(QStringLiteral("solarized-light"));
    EXPECT_TRUE(view.currentTheme().errors.isEmpty());
}

TEST(EditorView, PreferencesShapeTheText)
{
    ORVMDTextView view;
    view.resize(900, 600);
    view.show();
    view.setPlainText(QStringLiteral("line"));
    MyPreferences *prefs = MyPreferences::sharedInstance();
    prefs->setEditorLineSpacing(0);
    const qreal plain = view.document()->documentLayout()->blockBoundingRect(view.document()->firstBlock()).height();
    prefs->setEditorLineSpacing(12);
    const qreal spaced = view.document()->documentLayout()->blockBoundingRect(view.document()->firstBlock()).height();
    EXPECT_NEAR(spaced - plain, 12, 0.5);
    prefs->setEditorLineSpacing(4);

    prefs->setEditorFontInfo({{QStringLiteral("name"), QStringLiteral("DejaVu Sans Mono")}, {QStringLiteral("size"), 20.0}});
    EXPECT_EQ(view.font().pixelSize(), 20);
    prefs->setIsSpaceInsteadTabs(false);
    view.setPlainText(QString());
    QTest::keyClick(&view, Qt::Key_Tab);
    EXPECT_EQ(view.markdownText(), QStringLiteral("\t"));
    prefs->setIsSpaceInsteadTabs(true);
    prefs->setEditorContentMaxWidth(500);
    EXPECT_LE(view.viewport()->width(), 500) << "the text column keeps its width";
    prefs->setEditorContentMaxWidth(700);
    prefs->setEditorFontInfo({{QStringLiteral("name"), QStringLiteral("Menlo")}, {QStringLiteral("size"), 16.0}});
}

TEST(EditorView, BoundDocumentFollowsBothWays)
{
    App a;
    const QString path = a.home.filePath(QStringLiteral("note.md"));
    orvotest::writeFile(path, "# Note\r\n\r\ntext\r\n");
    ORVDocument doc(&a.app);
    ASSERT_TRUE(doc.readFromURL(path));
    ORVMDTextView view;
    view.show();
    view.bindDocument(&doc);
    EXPECT_EQ(view.markdownText(), QStringLiteral("# Note\n\ntext\n"));
    EXPECT_FALSE(doc.hasUnautosavedChanges()) << "showing a file changes nothing in it";
    view.moveCursor(QTextCursor::End);
    QTest::keyClicks(&view, QStringLiteral("more"));
    EXPECT_EQ(doc.textStorage()->string(), QStringLiteral("# Note\n\ntext\nmore")) << "the first edit gives the storage plain line ends";
    EXPECT_TRUE(doc.hasUnautosavedChanges());
    QTest::keyClicks(&view, QStringLiteral("!"));
    EXPECT_EQ(doc.textStorage()->string(), view.markdownText());

    orvotest::writeFile(path, "# Changed on disk\n");
    ASSERT_TRUE(doc.reloadDocumentFromDisk());
    EXPECT_EQ(view.markdownText(), QStringLiteral("# Changed on disk\n"));
    ASSERT_TRUE(doc.saveDocument());
    EXPECT_EQ(orvotest::readFile(path), QByteArray("# Changed on disk\n"));
}

TEST(EditorView, FindAndReplace)
{
    ORVMDTextView view;
    ORVFindBar bar(&view);
    view.setPlainText(QStringLiteral("cat and Cat and concat"));
    bar.showWithNeedle(QStringLiteral("cat"));
    EXPECT_EQ(bar.statusText(), QStringLiteral("3 match(es)"));
    ASSERT_TRUE(bar.findNext());
    EXPECT_EQ(view.textBuffer().selectedRange(), ORVEditRange(0, 3));
    bar.replaceField()->setText(QStringLiteral("dog"));
    EXPECT_TRUE(bar.replaceOne());
    EXPECT_EQ(view.markdownText(), QStringLiteral("dog and Cat and concat"));
    EXPECT_EQ(bar.replaceAll(), 2);
    EXPECT_EQ(view.markdownText(), QStringLiteral("dog and dog and condog"));
    view.undo();
    EXPECT_EQ(view.markdownText(), QStringLiteral("dog and Cat and concat")) << "replace all is one step";
}

TEST(EditorView, CountsAndAFiveMegabyteDocument)
{
    ORVMDTextView view;
    view.resize(800, 600);
    view.show();
    QSignalSpy counted(&view, &ORVMDTextView::statisticsChanged);
    view.setPlainText(QStringLiteral("one two three"));
    ASSERT_TRUE(counted.wait(5000));
    EXPECT_EQ(view.statistics().words, 3);

    QString big;
    const QString chunk = QStringLiteral("## Section\n\nSome *text* with `code` and a [link](http://x.example).\n\n- item\n- item\n\n");
    while (big.size() < 5 * 1024 * 1024)
        big += chunk;
    view.setPlainText(big);
    const qsizetype item = big.indexOf(QStringLiteral("- item\n- item"), big.size() / 2);
    QTextCursor c = view.textCursor();
    c.setPosition(int(item + 6)); // after the first "- item" in the middle
    view.setTextCursor(c);
    QTest::keyClick(&view, Qt::Key_Return);
    QTest::keyClicks(&view, QStringLiteral("typed"));
    EXPECT_EQ(view.markdownText().mid(item, 21), QStringLiteral("- item\n- typed\n- item"));
    waitForStyles(view);
    EXPECT_EQ(view.markdownText().size(), big.size() + 8);
}
