// ORVMDTextView: the keys the editor handles itself, and the commands with
// their default shortcuts.
#include "app/ORVMDTextView.h"

#include "highlight/HGMarkdownHighlighter.h"

#include <QAction>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QUrl>

bool ORVMDTextView::event(QEvent *event)
{
    // The text widget claims some keys that are our shortcuts (Ctrl+K
    // deletes to the line's end there): leave those to the commands.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        const QKeySequence pressed(key->keyCombination());
        for (const QAction *a : std::as_const(m_actions)) {
            if (!a->shortcut().isEmpty() && a->shortcut().matches(pressed) == QKeySequence::ExactMatch) {
                event->ignore();
                return true;
            }
        }
    }
    return QPlainTextEdit::event(event);
}

void ORVMDTextView::keyPressEvent(QKeyEvent *event)
{
    if (isReadOnly()) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (mods == Qt::NoModifier) {
            m_commands.insertNewlineContinuingStructure();
            ensureCursorVisible();
            return;
        }
        if (mods == Qt::ShiftModifier) {
            // A plain line end (the widget would insert a line separator).
            m_commands.insertNewline();
            ensureCursorVisible();
            return;
        }
        break;
    case Qt::Key_Tab:
        if (mods == Qt::NoModifier) {
            m_commands.insertTab();
            ensureCursorVisible();
            return;
        }
        break;
    case Qt::Key_Backtab:
        m_commands.unindent();
        ensureCursorVisible();
        return;
    case Qt::Key_Backspace:
        if (mods == Qt::NoModifier && m_commands.checkIsDeleteCharactsInOrderListAndIsDoDelelte(true)) {
            ensureCursorVisible();
            return;
        }
        break;
    case Qt::Key_Delete:
        if (mods == Qt::NoModifier && textCursor().hasSelection() &&
            m_commands.checkIsDeleteCharactsInOrderListAndIsDoDelelte(true)) {
            ensureCursorVisible();
            return;
        }
        break;
    default:
        break;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void ORVMDTextView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && (event->modifiers() & Qt::ControlModifier) &&
        m_highlighter->makeLinksClickable && m_highlighter->isCachedResultCurrent()) {
        const int pos = cursorForPosition(event->position().toPoint()).position();
        const QString address = m_highlighter->cachedElements()->linkAddressAt(pos);
        if (!address.isEmpty()) {
            emit linkActivated(address);
            return;
        }
    }
    QPlainTextEdit::mouseReleaseEvent(event);
}

QAction *ORVMDTextView::addCommand(const QString &name, const QString &text, const QKeySequence &keys,
                                   void (ORVMDTextCommands::*command)())
{
    auto *action = new QAction(text, this);
    action->setObjectName(name);
    if (!keys.isEmpty())
        action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(action, &QAction::triggered, this, [this, command] {
        if (isReadOnly())
            return;
        (m_commands.*command)();
        ensureCursorVisible();
    });
    addAction(action);
    m_actions << action;
    return action;
}

QAction *ORVMDTextView::actionNamed(const QString &objectName) const
{
    for (QAction *a : m_actions) {
        if (a->objectName() == objectName)
            return a;
    }
    return nullptr;
}

void ORVMDTextView::createActions()
{
    using C = ORVMDTextCommands;
    addCommand(QStringLiteral("toggleStrong"), tr("Bold"), QKeySequence::Bold, &C::toggleStrong);
    addCommand(QStringLiteral("toggleEmphasis"), tr("Italic"), QKeySequence::Italic, &C::toggleEmphasis);
    addCommand(QStringLiteral("toggleUnderline"), tr("Underline"), QKeySequence::Underline, &C::toggleUnderline);
    addCommand(QStringLiteral("toggleStrikethrough"), tr("Strikethrough"), QKeySequence(tr("Ctrl+Shift+X")),
               &C::toggleStrikethrough);
    addCommand(QStringLiteral("toggleHighlight"), tr("Highlight"), QKeySequence(tr("Ctrl+Shift+H")), &C::toggleHighlight);
    addCommand(QStringLiteral("toggleInlineCode"), tr("Inline Code"), QKeySequence(tr("Ctrl+`")), &C::toggleInlineCode);
    addCommand(QStringLiteral("toggleBlockCode"), tr("Code Block"), QKeySequence(tr("Ctrl+Shift+C")), &C::toggleBlockCode);
    addCommand(QStringLiteral("toggleComment"), tr("Comment"), QKeySequence(tr("Ctrl+/")), &C::toggleComment);
    addCommand(QStringLiteral("toggleLink"), tr("Link"), QKeySequence(tr("Ctrl+K")), &C::toggleLink);
    addCommand(QStringLiteral("toggleImage"), tr("Image"), QKeySequence(tr("Ctrl+Shift+K")), &C::toggleImage);
    addCommand(QStringLiteral("convertToH1"), tr("Heading 1"), QKeySequence(tr("Ctrl+1")), &C::convertToH1);
    addCommand(QStringLiteral("convertToH2"), tr("Heading 2"), QKeySequence(tr("Ctrl+2")), &C::convertToH2);
    addCommand(QStringLiteral("convertToH3"), tr("Heading 3"), QKeySequence(tr("Ctrl+3")), &C::convertToH3);
    addCommand(QStringLiteral("convertToH4"), tr("Heading 4"), QKeySequence(tr("Ctrl+4")), &C::convertToH4);
    addCommand(QStringLiteral("convertToH5"), tr("Heading 5"), QKeySequence(tr("Ctrl+5")), &C::convertToH5);
    addCommand(QStringLiteral("convertToH6"), tr("Heading 6"), QKeySequence(tr("Ctrl+6")), &C::convertToH6);
    addCommand(QStringLiteral("convertToParagraph"), tr("Paragraph"), QKeySequence(tr("Ctrl+0")), &C::convertToParagraph);
    addCommand(QStringLiteral("toggleUnorderedList"), tr("Bulleted List"), QKeySequence(tr("Ctrl+Shift+L")),
               &C::toggleUnorderedList);
    addCommand(QStringLiteral("toggleOrderedList"), tr("Numbered List"), QKeySequence(tr("Ctrl+Shift+O")),
               &C::toggleOrderedList);
    addCommand(QStringLiteral("toggleTaskList"), tr("Task List"), QKeySequence(tr("Ctrl+Shift+T")), &C::toggleTaskList);
    addCommand(QStringLiteral("toggleBlockquote"), tr("Quote"), QKeySequence(tr("Ctrl+Shift+Q")), &C::toggleBlockquote);
    addCommand(QStringLiteral("indent"), tr("Indent"), QKeySequence(tr("Ctrl+]")), &C::indent);
    addCommand(QStringLiteral("unindent"), tr("Outdent"), QKeySequence(tr("Ctrl+[")), &C::unindent);
    addCommand(QStringLiteral("insertNewParagraph"), tr("New Paragraph"), QKeySequence(tr("Ctrl+Return")),
               &C::insertNewParagraph);
    addCommand(QStringLiteral("insertHR"), tr("Horizontal Rule"), QKeySequence(), &C::insertHR);
    addCommand(QStringLiteral("insertCommentReadMore"), tr("Read More Mark"), QKeySequence(), &C::insertCommentReadMore);
    addCommand(QStringLiteral("insertAmp"), tr("Ampersand Entity"), QKeySequence(), &C::insertAmp);
    addCommand(QStringLiteral("insertLt"), tr("Less-Than Entity"), QKeySequence(), &C::insertLt);
    addCommand(QStringLiteral("insertGt"), tr("Greater-Than Entity"), QKeySequence(), &C::insertGt);
    addCommand(QStringLiteral("insertNbsp"), tr("No-Break Space Entity"), QKeySequence(), &C::insertNbsp);
    addCommand(QStringLiteral("insertQuot"), tr("Quotation Mark Entity"), QKeySequence(), &C::insertQuot);
    addCommand(QStringLiteral("insert39"), tr("Apostrophe Entity"), QKeySequence(), &C::insert39);
    addCommand(QStringLiteral("insertEmsp"), tr("Em Space Entity"), QKeySequence(), &C::insertEmsp);
    addCommand(QStringLiteral("insertEnsp"), tr("En Space Entity"), QKeySequence(), &C::insertEnsp);

    auto *dateTime = new QAction(tr("Date and Time"), this);
    dateTime->setObjectName(QStringLiteral("insertCurrentDateTime"));
    connect(dateTime, &QAction::triggered, this, [this] { m_commands.insertCurrentDateTime(); });
    auto *date = new QAction(tr("Date"), this);
    date->setObjectName(QStringLiteral("insertCurrentDate"));
    connect(date, &QAction::triggered, this, [this] { m_commands.insertCurrentDate(); });
    auto *find = new QAction(tr("Find…"), this);
    find->setObjectName(QStringLiteral("find"));
    find->setShortcut(QKeySequence::Find);
    find->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(find, &QAction::triggered, this, [this] { emit findRequested(textCursor().selectedText()); });
    for (QAction *a : {dateTime, date, find}) {
        addAction(a);
        m_actions << a;
    }
}
