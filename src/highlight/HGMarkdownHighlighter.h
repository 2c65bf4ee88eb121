#pragma once

#include "highlight/HGMarkdownHighlightingStyle.h"
#include "highlight/HGParseResult.h"
#include "highlight/HGStyleSheet.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTextCharFormat>
#include <QTextDocument>

#include <atomic>
#include <functional>
#include <memory>

class QTextDocument;
class QThread;

// A range of the document in UTF-16 units.
struct HGTextRange {
    qsizetype location = 0;
    qsizetype length = 0;
    qsizetype end() const { return location + length; }
    bool operator==(const HGTextRange &) const = default;
};
Q_DECLARE_METATYPE(HGTextRange)

// Posted through ORVNotificationCenter (sender: the highlighter) after styles
// went onto a range ("location" and "length" in userInfo), and after the
// whole text was styled for the first time.
inline const QString kHGMarkdownHighlighterDidHighlightVisibleRange =
    QStringLiteral("kHGMarkdownHighlighterDidHighlightVisibleRange");
inline const QString kHGMarkdownHighlighterDidParseAllAndHighlight =
    QStringLiteral("kHGMarkdownHighlighterDidParseAllAndHighlight");

// HGMarkdownHighlighter keeps a text document's looks in step with its
// Markdown. After every change it waits for 0.15 s of quiet, parses a copy
// of the text with the highlight grammar on a worker thread, and styles on
// the main thread: the visible and edited lines each time, the whole text
// after the first parse. It also keeps the document's outline (its headings).
//
// Styles go on as layout formats of the document's blocks (not as character
// formats), so they make no undo steps and no change notifications, and
// they shift with the text as it is typed until the next parse.
//
// Scheduling: idle, waiting (timer running), parsing (worker alive), and
// parsing with the parse-again flag set. A change in any state restarts the
// timer; when it fires during a parse, the flag is set, the parse's result
// is dropped and the worker's exit starts a new parse. There is never more
// than one worker, and it reads only its own copy of the text.
//
// A result is stale, and applies nowhere, when the text's length or its
// revision differ from those of the copy it was made from.
//
// The document reports its changes only once it has a layout: a view's
// (QPlainTextEdit sets its own), or the default one documentLayout() makes.
//
// Ownership: the document is not owned and must outlive the highlighter, or
// the highlighter must be deactivated first. Thread: the main thread; the
// destructor waits for a running worker.
class HGMarkdownHighlighter : public QObject
{
    Q_OBJECT
public:
    // A one-shot timer. The highlighter's two timers are made through a
    // factory so that tests can drive time themselves.
    class Timer
    {
    public:
        virtual ~Timer() = default;
        virtual void start(int milliseconds) = 0;
        virtual void stop() = 0;
        virtual bool isActive() const = 0;
        std::function<void()> onTimeout;
    };
    using TimerFactory = std::function<std::unique_ptr<Timer>()>;

    // The quiet after typing before a parse. initWithTextView:waitInterval:
    // takes an interval and keeps this one whatever it is given.
    static constexpr double kWaitInterval = 0.15;
    // The coalescing delay of styling after a scroll.
    static constexpr int kHighlightAfterScrollMilliseconds = 30;

    explicit HGMarkdownHighlighter(QTextDocument *document, QObject *parent = nullptr,
                                   TimerFactory timers = TimerFactory());
    ~HGMarkdownHighlighter() override;

    QTextDocument *targetDocument() const { return m_document; }
    double waitInterval() const { return m_waitInterval; }

    // The part of the text the view shows; the whole text when unset.
    void setVisibleRangeProvider(std::function<HGTextRange()> provider) { m_visibleRange = std::move(provider); }

    // The extension word of the grammar (pmh_extensions).
    int extensions() const { return m_extensions; }
    void setExtensions(int extensions) { m_extensions = extensions; }

    QList<HGMarkdownHighlightingStyle> styles() const { return m_styles; }
    // Replaces the styles and restyles everything already parsed.
    void setStyles(const QList<HGMarkdownHighlightingStyle> &styles);
    // The base font relative sizes and families count from.
    void setBaseFont(const QFont &font) { m_baseFont = font; }
    QFont baseFont() const { return m_baseFont; }

    // applyStylesFromStylesheet:withErrorHandler: builds one style per rule
    // of the sheet (and STRIKE and NOTE styles from EMPH and REFERENCE when
    // the sheet has none), keeps the sheet's editor colours, and applies.
    void applyStylesFromStylesheet(const HGStyleSheet &sheet);
    bool applyStylesFromStylesheetText(const QString &text,
                                       const std::function<void(const HGStyleSheetError &)> &errorHandler);
    // handleStyleParsingError: the errors of the last sheet read from text.
    void handleStyleParsingError(const HGStyleSheetError &error) { m_styleErrors.append(error); }
    QList<HGStyleSheetError> styleParsingErrors() const { return m_styleErrors; }
    // The editor colours of the applied sheet.
    const HGStyleSheet &styleSheet() const { return m_sheet; }
    // getDefaultStyles: the styles of the built-in theme.
    static QList<HGMarkdownHighlightingStyle> getDefaultStyles(const QFont &baseFont);
    static QList<HGMarkdownHighlightingStyle> stylesFromStyleSheet(const HGStyleSheet &sheet, const QFont &baseFont);

    bool parseAndHighlightAutomatically = true;
    // Links carry their address as an anchor in their format.
    bool makeLinksClickable = false;

    bool isActive() const { return m_isActive; }
    // Sets default styles if there are none, clears the first-pass flag,
    // starts a parse and follows the document's changes from now on.
    void activate();
    // Stops following the document. A running parse finishes unused.
    void deactivate();

    // parseAndHighlightNow: a parse now, without waiting.
    void parseAndHighlightNow();
    // Styles the visible and edited lines (highlightNow) or all lines
    // (highlightAllNow) from the last parse, if it is still current.
    void highlightNow();
    void highlightAllNow();
    // The view scrolled: styles the lines that came into view, shortly.
    void highlightVisibleRect();

    // The last parse's result (null before the first); it may be stale.
    std::shared_ptr<const HGParseResult> cachedElements() const { return m_cachedElements; }
    bool isCachedResultCurrent() const;
    QList<HGOutlineItem> docOutline() const;

    // State, for views and tests.
    bool isUpdateTimerActive() const { return m_updateTimer->isActive(); }
    bool isParsing() const { return m_workerThread != nullptr; }
    bool isParseAgainFlagSet() const { return m_parseAgain; }
    bool isFirstPassDone() const { return m_firstPassDone; }
    // The ranges edited since styles were last applied.
    QList<HGTextRange> editedRanges() const { return m_editedRangeDataArr; }

signals:
    // A worker started parsing a copy of `length` units.
    void parsingStarted(qsizetype length);
    // The worker ended (its result, if any, was delivered before this).
    void parsingFinished();
    // A parse's result was dropped (the text changed while it ran).
    void parseResultDropped();
    void didHighlightVisibleRange(HGTextRange range);
    void didParseAllAndHighlight();
    void docOutlineDidChange(const QList<HGOutlineItem> &outline);

private:
    void textStorageDidProcessEditing(int from, int charsRemoved, int charsAdded);
    void textViewTextDidChange();
    void textViewUpdateTimerFire();
    void highlightTimerFire();
    void requestParsing();
    void parserDidParse(std::shared_ptr<const HGParseResult> result);
    void threadDidExit();
    void applyVisibleRangeHighlighting();
    void applyHighlightingWithRange(HGTextRange range);
    void rebuildFormats();
    void shiftFormatsOfEditedBlock(int from, int removed, int added);

    QPointer<QTextDocument> m_document;
    std::function<HGTextRange()> m_visibleRange;
    double m_waitInterval = 0.5;
    int m_extensions;
    QFont m_baseFont;
    QList<HGMarkdownHighlightingStyle> m_styles;
    HGStyleSheet m_sheet;
    QList<HGStyleSheetError> m_styleErrors;
    // One merged format per element type that has a style.
    QHash<int, QTextCharFormat> m_formatOfType;

    bool m_isActive = false;
    bool m_firstPassDone = false;
    bool m_parseAgain = false;
    std::unique_ptr<Timer> m_updateTimer;
    std::unique_ptr<Timer> m_highlightTimer;
    QThread *m_workerThread = nullptr;
    std::shared_ptr<std::atomic<bool>> m_workerCancelled;
    QList<QMetaObject::Connection> m_documentConnections;

    // The copy being parsed: its length (highlightSeedRandomNumber) and the
    // document's revision when it was taken.
    qsizetype m_highlightSeedRandomNumber = -1;
    quint64 m_parsedRevision = 0;
    // Counts the document's edits: a result is current only for the very
    // text it was parsed from.
    quint64 m_editCounter = 0;
    int m_lastBlockCount = 0;
    std::shared_ptr<const HGParseResult> m_cachedElements;
    qsizetype m_cachedLength = -1;
    quint64 m_cachedRevision = ~quint64(0);

    QList<HGTextRange> m_editedRangeDataArr;
    HGTextRange m_textStorageEditedRange{-1, 0};
    HGTextRange m_lastHighlightRange{-1, 0};
};
