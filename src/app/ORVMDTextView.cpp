#include "app/ORVMDTextView.h"

#include "app/ORVSpacedTextLayout.h"
#include "core/MyPreferences.h"
#include "core/ORVNotificationCenter.h"
#include "editor/ORVDocument.h"
#include "highlight/HGMarkdownHighlighter.h"
#include "highlight/pmh_parser/pmh_definitions.h"

#include <QAction>
#include <QDesktopServices>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSet>
#include <QTextBlock>
#include <QUrl>

namespace {

// Counting words waits for typing to pause this long: on a long text the
// count is the one thing per keystroke whose cost grows with the text.
constexpr int kRecountDelayMilliseconds = 300;

const QSet<QString> &viewPreferenceKeys()
{
    static const QSet<QString> keys = {
        QStringLiteral("editorFontInfo"),           QStringLiteral("editorTextInsetsH"),
        QStringLiteral("editorTextInsetsV"),        QStringLiteral("editorLineSpacing"),
        QStringLiteral("editorContentMaxWidth"),    QStringLiteral("changeCurrentLineBGColor"),
        QStringLiteral("typewriterScrollingState"), QStringLiteral("typewriterScrollingActivatePercent"),
        QStringLiteral("isSpaceInsteadTabs"),       QStringLiteral("isDisableAutoCorrectOrderListNumber"),
        QStringLiteral("isEnableMath"),             QStringLiteral("isDisableAutolink"),
        QStringLiteral("isMakeLinksClickableInEditor"), QStringLiteral("isDarkThemes"),
        QStringLiteral("editorThemeName"),          QStringLiteral("editorDarkThemeName"),
    };
    return keys;
}

QFont editorFontFromPreferences()
{
    const QVariantMap info = MyPreferences::sharedInstance()->editorFontInfo();
    const QString name = info.value(QStringLiteral("name")).toString();
    const double size = info.value(QStringLiteral("size")).toDouble();
    QFont font(name.isEmpty() ? QStringLiteral("monospace") : name);
    // A face that is not installed falls back to a fixed-pitch one, the kind
    // the default names.
    font.setStyleHint(QFont::TypeWriter);
    // Sizes are kept in the desktop's points of 1/72 inch on a 72 dpi
    // screen, which are pixels here.
    constexpr int kDefaultFontPixels = 16;
    constexpr int kLargestFontPixels = 200;
    font.setPixelSize(size > 0 ? qBound(6, qRound(size), kLargestFontPixels) : kDefaultFontPixels);
    return font;
}

} // namespace

ORVMDTextView::ORVMDTextView(QWidget *parent) : QPlainTextEdit(parent), m_buffer(this), m_commands(m_buffer)
{
    auto *doc = new QTextDocument(this);
    m_layout = new ORVSpacedTextLayout(doc);
    doc->setDocumentLayout(m_layout);
    setDocument(doc);
    m_buffer.attachToDocument();
    setCenterOnScroll(true); // the last lines can scroll up to the middle
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setFrameShape(QFrame::NoFrame);
    setAutoFillBackground(true);

    m_highlighter = new HGMarkdownHighlighter(document(), this);
    m_highlighter->setVisibleRangeProvider([this] {
        const ORVEditRange r = visibleRange();
        return HGTextRange{r.location, r.length};
    });

    m_statisticsTimer.setSingleShot(true);
    m_statisticsTimer.setInterval(kRecountDelayMilliseconds);
    connect(&m_statisticsTimer, &QTimer::timeout, this, &ORVMDTextView::recount);
    connect(&m_buffer, &ORVTextEditBuffer::textEdited, this, &ORVMDTextView::textEdited);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] {
        updateCurrentLine();
        if (m_typewriterScrolling && hasFocus())
            typewriterScroll();
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        m_highlighter->highlightVisibleRect();
        emit visibleTopChanged();
    });

    createActions();
    applyPreferences();
    ORVNotificationCenter::defaultCenter()->addObserver(
        PAPreferencesDidChangeNotification, this, [this](const ORVNotification &n) {
            const QString key = n.userInfo.value(QStringLiteral("key")).toString();
            if (viewPreferenceKeys().contains(key))
                applyPreferences();
        });
    m_highlighter->activate();
    recount();
}

ORVMDTextView::~ORVMDTextView() { m_highlighter->deactivate(); }

// ---- Preferences and theme

void ORVMDTextView::applyPreferences()
{
    MyPreferences *prefs = MyPreferences::sharedInstance();
    m_commands.setOptions(ORVEditingOptions::fromPreferences());
    m_insetsH = int(qBound(qint64(0), prefs->editorTextInsetsH(), qint64(400)));
    m_insetsV = int(qBound(qint64(0), prefs->editorTextInsetsV(), qint64(400)));
    m_contentMaxWidth = int(qBound(qint64(0), prefs->editorContentMaxWidth(), qint64(100000)));
    m_highlightCurrentLine = prefs->changeCurrentLineBGColor();
    m_typewriterScrolling = prefs->typewriterScrollingState() != 0;
    m_typewriterPercent = int(qBound(qint64(0), prefs->typewriterScrollingActivatePercent(), qint64(100)));

    int extensions = pmh_EXT_NOTES | pmh_EXT_STRIKE | pmh_EXT_MARK;
    if (prefs->isEnableMath())
        extensions |= pmh_EXT_MATH;
    if (!prefs->isDisableAutolink())
        extensions |= pmh_EXT_AUTOLINK;
    const bool reparse = extensions != m_highlighter->extensions();
    m_highlighter->setExtensions(extensions);
    m_highlighter->makeLinksClickable = prefs->isMakeLinksClickableInEditor();

    const QFont font = editorFontFromPreferences();
    const qreal spacing = qreal(qBound(qint64(0), prefs->editorLineSpacing(), qint64(100)));
    const bool relayout = font != this->font() || !qFuzzyCompare(spacing + 1, m_layout->lineSpacing() + 1);
    setFont(font);
    document()->setDefaultFont(font);
    m_layout->setLineSpacing(spacing);
    setTabStopDistance(QFontMetricsF(font).horizontalAdvance(QLatin1Char(' ')) * 4);
    m_highlighter->setBaseFont(font);
    if (relayout)
        document()->markContentsDirty(0, document()->characterCount());

    applyEditorTheme();
    updateMargins();
    updateCurrentLine();
    if (reparse && m_highlighter->isActive())
        m_highlighter->parseAndHighlightNow();
}

void ORVMDTextView::applyEditorTheme(const QString &name)
{
    MyPreferences *prefs = MyPreferences::sharedInstance();
    QString theme = name;
    if (theme.isEmpty())
        theme = prefs->isDarkThemes() ? prefs->editorDarkThemeName() : prefs->editorThemeName();
    m_theme = HGEditorThemes::loadTheme(theme);
    m_highlighter->applyStylesFromStylesheet(m_theme.sheet);

    const HGStyleSheet &sheet = m_theme.sheet;
    QPalette p = palette();
    if (sheet.editor.background.isValid()) {
        p.setColor(QPalette::Base, sheet.editor.background);
        p.setColor(QPalette::Window, sheet.editor.background); // the margins around the text column
    }
    if (sheet.editor.foreground.isValid()) {
        p.setColor(QPalette::Text, sheet.editor.foreground);
        p.setColor(QPalette::WindowText, sheet.editor.foreground);
    }
    if (sheet.editorSelection.background.isValid())
        p.setColor(QPalette::Highlight, sheet.editorSelection.background);
    p.setColor(QPalette::HighlightedText, sheet.editorSelection.foreground.isValid() ? sheet.editorSelection.foreground
                                                                                    : p.color(QPalette::Text));
    setPalette(p);
    viewport()->setPalette(p);
    updateCurrentLine();
    if (!m_theme.errors.isEmpty())
        emit themeDidFail(m_theme);
}

void ORVMDTextView::updateMargins()
{
    // The text column is at most editorContentMaxWidth wide and centred;
    // narrower windows keep the horizontal inset on both sides.
    int side = m_insetsH;
    if (m_contentMaxWidth > 0) {
        const int scrollBar = verticalScrollBar()->isVisible() ? verticalScrollBar()->width() : 0;
        const int spare = contentsRect().width() - scrollBar - m_contentMaxWidth;
        side = qMax(side, (spare + 1) / 2);
    }
    setViewportMargins(side, m_insetsV / 2, side, 0);
}

void ORVMDTextView::updateCurrentLine()
{
    QList<QTextEdit::ExtraSelection> selections;
    const QColor colour = m_theme.sheet.editorCurrentLine.background;
    if (m_highlightCurrentLine && colour.isValid() && !textCursor().hasSelection()) {
        QTextEdit::ExtraSelection line;
        line.format.setBackground(colour);
        line.format.setProperty(QTextFormat::FullWidthSelection, true);
        line.cursor = textCursor();
        line.cursor.clearSelection();
        selections << line;
    }
    setExtraSelections(selections);
}

void ORVMDTextView::typewriterScroll()
{
    // Keeps the caret's line at the chosen height of the view while typing.
    const int target = viewport()->height() * m_typewriterPercent / 100;
    const int delta = cursorRect().top() - target;
    const int lineHeight = qMax(1, fontMetrics().lineSpacing() + int(m_layout->lineSpacing()));
    const int lines = delta / lineHeight;
    if (lines != 0)
        verticalScrollBar()->setValue(verticalScrollBar()->value() + lines);
}

// ---- Geometry

ORVEditRange ORVMDTextView::visibleRange() const
{
    QTextBlock block = firstVisibleBlock();
    if (!block.isValid())
        return {};
    const qsizetype start = block.position();
    const qreal bottom = viewport()->height();
    qreal top = blockBoundingGeometry(block).translated(contentOffset()).top();
    QTextBlock last = block;
    while (block.isValid() && top <= bottom) {
        last = block;
        top += blockBoundingRect(block).height();
        block = block.next();
    }
    return {start, last.position() + last.length() - 1 - start};
}

int ORVMDTextView::topVisibleBlockNumber() const { return firstVisibleBlock().blockNumber(); }

double ORVMDTextView::topVisibleBlockFraction() const
{
    const QTextBlock block = firstVisibleBlock();
    if (!block.isValid())
        return 0;
    const QRectF r = blockBoundingGeometry(block).translated(contentOffset());
    return r.height() > 0 ? qBound(0.0, -r.top() / r.height(), 1.0) : 0.0;
}

void ORVMDTextView::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    updateMargins();
    m_highlighter->highlightVisibleRect();
    emit visibleTopChanged();
}

void ORVMDTextView::scrollContentsBy(int dx, int dy)
{
    QPlainTextEdit::scrollContentsBy(dx, dy);
    if (dy != 0)
        emit visibleTopChanged();
}

// ---- The document

void ORVMDTextView::bindDocument(ORVDocument *doc)
{
    if (m_document)
        disconnect(m_document->textStorage(), nullptr, this, nullptr);
    m_document = doc;
    if (!doc)
        return;
    const QString &text = doc->textStorage()->string();
    m_storageHasCarriageReturns = text.contains(QLatin1Char('\r'));
    m_applyingStorageChange = true;
    setPlainText(text);
    m_applyingStorageChange = false;
    // A text set while the view is hidden meets a viewport of no height (the
    // top inset takes all of it): keeping the caret in view there scrolls past
    // the first lines, and nothing scrolls back once the view gets its size.
    // A newly bound text starts at its top; a saved place is restored after.
    verticalScrollBar()->setValue(0);
    document()->clearUndoRedoStacks();
    connect(doc->textStorage(), &ORVTextStorage::didProcessEditing, this, &ORVMDTextView::storageDidProcessEditing);
    connect(doc, &ORVDocument::highlightAllDocumentWindowControllers, this, [this] { m_highlighter->parseAndHighlightNow(); });
    connect(doc, &QObject::destroyed, this, [this] { m_document = nullptr; });
}

void ORVMDTextView::textEdited(qsizetype location, qsizetype removed, const QString &inserted)
{
    if (m_document && !m_applyingStorageChange) {
        ORVTextStorage *storage = m_document->textStorage();
        m_applyingStorageChange = true;
        // A text with "\r\n" line ends is shown with "\n": offsets differ, so
        // the first edit hands the storage the whole text (it is saved with
        // "\n" from then on); until then an untouched file keeps its bytes.
        if (m_storageHasCarriageReturns || storage->length() != m_buffer.string().size() - inserted.size() + removed) {
            storage->setString(m_buffer.string());
            m_storageHasCarriageReturns = false;
        } else {
            storage->replaceCharactersInRange(location, removed, inserted);
        }
        m_applyingStorageChange = false;
    }
    m_statisticsTimer.start();
    emit markdownTextChanged();
}

void ORVMDTextView::storageDidProcessEditing(qsizetype location, qsizetype length, qsizetype changeInLength)
{
    if (m_applyingStorageChange || !m_document)
        return;
    // Someone else changed the text (a reload from disk): show it.
    const QString &text = m_document->textStorage()->string();
    m_applyingStorageChange = true;
    if (text.contains(QLatin1Char('\r'))) {
        m_storageHasCarriageReturns = true;
        const int keep = verticalScrollBar()->value();
        setPlainText(text);
        verticalScrollBar()->setValue(keep);
    } else {
        QTextCursor c(document());
        c.setPosition(int(qBound<qsizetype>(0, location, m_buffer.string().size())));
        c.setPosition(int(qBound<qsizetype>(0, location + length - changeInLength, m_buffer.string().size())),
                      QTextCursor::KeepAnchor);
        c.insertText(text.mid(location, length));
    }
    m_applyingStorageChange = false;
}

void ORVMDTextView::recount()
{
    m_statistics = ORVTextStatistics::countText(m_buffer.string());
    emit statisticsChanged(m_statistics);
}
