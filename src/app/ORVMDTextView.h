#pragma once

#include "app/ORVTextEditBuffer.h"
#include "editor/ORVDocument.h"
#include "editor/ORVMDTextCommands.h"
#include "editor/ORVTextStatistics.h"
#include "highlight/HGEditorThemes.h"

#include <QList>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTimer>

class HGMarkdownHighlighter;
class ORVSpacedTextLayout;
class QAction;

// The Markdown text view: a plain text editor bound to the editing commands,
// the highlighter and the editor preferences.
//
// It keeps the Markdown text and nothing else: styles are layout formats of
// the highlighter, so the text a command or a save reads is always the
// plain text. Bound to an ORVDocument, every edit goes into the document's
// text storage, and changes made to the storage elsewhere (a reload from
// disk) come back into the view.
//
// Preferences followed: editorFontInfo, editorTextInsetsH/V,
// editorLineSpacing, editorContentMaxWidth, changeCurrentLineBGColor,
// typewriterScrollingState and typewriterScrollingActivatePercent,
// isSpaceInsteadTabs, isDisableAutoCorrectOrderListNumber, isEnableMath,
// isDisableAutolink, isMakeLinksClickableInEditor, isDarkThemes with
// editorThemeName and editorDarkThemeName. They are read again whenever
// one of them changes.
//
// Thread: the main thread.
class ORVMDTextView : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit ORVMDTextView(QWidget *parent = nullptr);
    ~ORVMDTextView() override;

    // Shows the document's text and keeps the two in step from now on. The
    // document is not owned; the view lets go of it when it is destroyed.
    void bindDocument(ORVDocument *document);
    ORVDocument *boundDocument() const { return m_document; }

    // The whole text (lines end with "\n"), without a copy.
    const QString &markdownText() const { return m_buffer.string(); }
    ORVTextEditBuffer &textBuffer() { return m_buffer; }
    ORVMDTextCommands &commands() { return m_commands; }
    HGMarkdownHighlighter *highlighter() const { return m_highlighter; }

    // Reads the editor preferences again and applies them.
    void applyPreferences();
    // Loads and applies an editor theme by name (the preference's when
    // empty). Its faults go out through themeDidFail.
    void applyEditorTheme(const QString &name = QString());
    const HGEditorThemes::LoadedTheme &currentTheme() const { return m_theme; }

    // The commands with their default key bindings, for menus and toolbars.
    QList<QAction *> editingActions() const { return m_actions; }
    QAction *actionNamed(const QString &objectName) const;

    ORVTextStatistics statistics() const { return m_statistics; }

    // The first line in view, and how far (0 to 1) the view's top has
    // scrolled into it, for scroll sync.
    int topVisibleBlockNumber() const;
    double topVisibleBlockFraction() const;

    // The visible part of the text, in UTF-16 units.
    ORVEditRange visibleRange() const;

signals:
    // The counts after the text changed (coalesced while typing).
    void statisticsChanged(const ORVTextStatistics &statistics);
    // The Markdown changed (every edit).
    void markdownTextChanged();
    // The view's top moved (scrolling or resizing).
    void visibleTopChanged();
    // A theme had faults; `theme.fellBackToDefault` says whether the
    // built-in theme stands in.
    void themeDidFail(const HGEditorThemes::LoadedTheme &theme);
    // A link was Ctrl-clicked in the text.
    void linkActivated(const QString &address);
    // Find was asked for (Ctrl+F), with the selection as the needle.
    void findRequested(const QString &selectedText);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void createActions();
    QAction *addCommand(const QString &name, const QString &text, const QKeySequence &keys,
                        void (ORVMDTextCommands::*command)());
    void updateMargins();
    void updateCurrentLine();
    void typewriterScroll();
    void textEdited(qsizetype location, qsizetype removed, const QString &inserted);
    void storageDidProcessEditing(qsizetype location, qsizetype length, qsizetype changeInLength);
    void recount();

    ORVSpacedTextLayout *m_layout = nullptr;
    ORVTextEditBuffer m_buffer;     // before m_commands, which holds it
    ORVMDTextCommands m_commands;
    HGMarkdownHighlighter *m_highlighter = nullptr;
    HGEditorThemes::LoadedTheme m_theme;
    QList<QAction *> m_actions;
    QTimer m_statisticsTimer;
    ORVTextStatistics m_statistics;

    QPointer<ORVDocument> m_document;
    bool m_applyingStorageChange = false;
    bool m_storageHasCarriageReturns = false;

    // Preferences as last read.
    int m_insetsH = 4;
    int m_insetsV = 60;
    int m_contentMaxWidth = 700;
    bool m_highlightCurrentLine = true;
    bool m_typewriterScrolling = false;
    int m_typewriterPercent = 50;
};
