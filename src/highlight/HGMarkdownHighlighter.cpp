#include "highlight/HGMarkdownHighlighter.h"

#include "core/ORVNotificationCenter.h"
#include "highlight/HGEditorThemes.h"
#include "highlight/HGStyleSheetParser.h"

#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QThread>
#include <QTimer>

namespace {

class QtOneShotTimer : public HGMarkdownHighlighter::Timer
{
public:
    QtOneShotTimer()
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (onTimeout)
                onTimeout();
        });
    }
    void start(int ms) override { m_timer.start(ms); }
    void stop() override { m_timer.stop(); }
    bool isActive() const override { return m_timer.isActive(); }

private:
    QTimer m_timer;
};

// Edited ranges kept between two stylings; past this many they fold into
// one, which styles a little more but keeps each keystroke's cost flat.
constexpr qsizetype kMaximumEditedRanges = 32;

bool isLinkType(pmh_element_type t)
{
    return t == pmh_LINK || t == pmh_AUTO_LINK_URL || t == pmh_AUTO_LINK_EMAIL || t == pmh_IMAGE;
}

} // namespace

HGMarkdownHighlighter::HGMarkdownHighlighter(QTextDocument *document, QObject *parent, TimerFactory timers)
    : QObject(parent), m_document(document), m_extensions(pmh_EXT_ALL)
{
    qRegisterMetaType<HGTextRange>();
    // initWithTextView:waitInterval: settles on this interval whatever it
    // is given.
    m_waitInterval = kWaitInterval;
    if (!timers)
        timers = [] { return std::make_unique<QtOneShotTimer>(); };
    m_updateTimer = timers();
    m_highlightTimer = timers();
    m_updateTimer->onTimeout = [this] { textViewUpdateTimerFire(); };
    m_highlightTimer->onTimeout = [this] { highlightTimerFire(); };
    if (m_document)
        m_baseFont = m_document->defaultFont();
}

HGMarkdownHighlighter::~HGMarkdownHighlighter()
{
    deactivate();
    if (m_workerThread) {
        m_workerCancelled->store(true);
        m_workerThread->wait();
        delete m_workerThread;
    }
}

// ---- Styles

QList<HGMarkdownHighlightingStyle> HGMarkdownHighlighter::stylesFromStyleSheet(const HGStyleSheet &sheet,
                                                                              const QFont &baseFont)
{
    QList<HGMarkdownHighlightingStyle> styles;
    for (const HGStyleSheet::ElementRule &rule : sheet.elements)
        styles.append(HGMarkdownHighlightingStyle::initWithStyleAttributesBaseFont(rule.type, rule.attributes, baseFont));
    // Themes written before strike-through and notes were coloured still
    // colour them: strike-through like emphasis, struck through; notes like
    // references (or links).
    if (!sheet.attributesForType(pmh_STRIKE)) {
        HGStyleAttributes strike;
        if (const HGStyleAttributes *emph = sheet.attributesForType(pmh_EMPH))
            strike.foreground = emph->foreground;
        strike.through = true;
        styles.append(HGMarkdownHighlightingStyle::initWithStyleAttributesBaseFont(pmh_STRIKE, strike, baseFont));
    }
    if (!sheet.attributesForType(pmh_NOTE)) {
        const HGStyleAttributes *ref = sheet.attributesForType(pmh_REFERENCE);
        if (!ref)
            ref = sheet.attributesForType(pmh_LINK);
        if (ref)
            styles.append(HGMarkdownHighlightingStyle::initWithStyleAttributesBaseFont(pmh_NOTE, *ref, baseFont));
    }
    return styles;
}

QList<HGMarkdownHighlightingStyle> HGMarkdownHighlighter::getDefaultStyles(const QFont &baseFont)
{
    return stylesFromStyleSheet(HGEditorThemes::defaultStyleSheet(), baseFont);
}

void HGMarkdownHighlighter::setStyles(const QList<HGMarkdownHighlightingStyle> &styles)
{
    m_styles = styles;
    m_formatOfType.clear();
    for (const HGMarkdownHighlightingStyle &s : m_styles) {
        QTextCharFormat &f = m_formatOfType[int(s.elementType)];
        f.merge(s.format());
    }
    if (m_firstPassDone)
        highlightAllNow();
}

void HGMarkdownHighlighter::applyStylesFromStylesheet(const HGStyleSheet &sheet)
{
    m_sheet = sheet;
    setStyles(stylesFromStyleSheet(sheet, m_baseFont));
}

bool HGMarkdownHighlighter::applyStylesFromStylesheetText(
    const QString &text, const std::function<void(const HGStyleSheetError &)> &errorHandler)
{
    m_styleErrors.clear();
    const HGStyleSheet sheet = HGStyleSheetParser::parse(text, [&](const HGStyleSheetError &e) {
        handleStyleParsingError(e);
        if (errorHandler)
            errorHandler(e);
    });
    applyStylesFromStylesheet(sheet);
    return m_styleErrors.isEmpty();
}

// ---- Activation

void HGMarkdownHighlighter::activate()
{
    if (m_isActive || !m_document)
        return;
    if (m_styles.isEmpty()) {
        m_sheet = HGEditorThemes::defaultStyleSheet();
        setStyles(getDefaultStyles(m_baseFont));
    }
    m_firstPassDone = false;
    m_documentConnections << connect(m_document, &QTextDocument::contentsChange, this,
                                     &HGMarkdownHighlighter::textStorageDidProcessEditing);
    m_isActive = true;
    requestParsing();
}

void HGMarkdownHighlighter::deactivate()
{
    for (const QMetaObject::Connection &c : std::as_const(m_documentConnections))
        disconnect(c);
    m_documentConnections.clear();
    m_updateTimer->stop();
    m_highlightTimer->stop();
    m_isActive = false;
}

// ---- Changes of the text

void HGMarkdownHighlighter::textStorageDidProcessEditing(int from, int charsRemoved, int charsAdded)
{
    ++m_editCounter;
    m_textStorageEditedRange = {from, charsAdded};
    shiftFormatsOfEditedBlock(from, charsRemoved, charsAdded);
    textViewTextDidChange();
}

void HGMarkdownHighlighter::textViewTextDidChange()
{
    if (parseAndHighlightAutomatically) {
        m_updateTimer->stop();
        m_updateTimer->start(int(m_waitInterval * 1000));
    }
    HGTextRange edited = m_textStorageEditedRange;
    if (edited.location < 0)
        edited.location = 0;
    // Typing grows one range; it need not become thousands of them.
    if (!m_editedRangeDataArr.isEmpty()) {
        HGTextRange &last = m_editedRangeDataArr.last();
        if (edited.location <= last.end() + 1 && edited.end() + 1 >= last.location) {
            const qsizetype lo = qMin(last.location, edited.location);
            last = {lo, qMax(last.end(), edited.end()) - lo};
            return;
        }
    }
    m_editedRangeDataArr.append(edited);
    if (m_editedRangeDataArr.size() > kMaximumEditedRanges) {
        HGTextRange all = m_editedRangeDataArr.first();
        for (const HGTextRange &r : std::as_const(m_editedRangeDataArr)) {
            const qsizetype lo = qMin(all.location, r.location);
            all = {lo, qMax(all.end(), r.end()) - lo};
        }
        m_editedRangeDataArr = {all};
    }
}

void HGMarkdownHighlighter::shiftFormatsOfEditedBlock(int from, int removed, int added)
{
    // Styles shift with the text as it is typed, until the next parse styles
    // it anew. Only an edit inside one line is followed; one that adds or
    // joins lines waits for the parse.
    const int blocks = m_document->blockCount();
    const bool sameLines = blocks == m_lastBlockCount;
    m_lastBlockCount = blocks;
    if (!sameLines)
        return;
    const QTextBlock block = m_document->findBlock(from);
    if (!block.isValid() || !block.layout())
        return;
    QList<QTextLayout::FormatRange> formats = block.layout()->formats();
    if (formats.isEmpty())
        return;
    const int pos = from - block.position();
    const int delta = added - removed;
    const auto mapStart = [&](int p) { return p < pos ? p : (p >= pos + removed ? p + delta : pos + added); };
    const auto mapEnd = [&](int p) { return p <= pos ? p : (p >= pos + removed ? p + delta : pos + added); };
    QList<QTextLayout::FormatRange> shifted;
    shifted.reserve(formats.size());
    for (const QTextLayout::FormatRange &f : std::as_const(formats)) {
        const int s = mapStart(f.start);
        const int e = mapEnd(f.start + f.length);
        if (e > s)
            shifted.append({s, e - s, f.format});
    }
    block.layout()->setFormats(shifted);
}

void HGMarkdownHighlighter::textViewUpdateTimerFire() { requestParsing(); }

void HGMarkdownHighlighter::highlightTimerFire() { applyVisibleRangeHighlighting(); }

// ---- Parsing

void HGMarkdownHighlighter::requestParsing()
{
    if (!m_document)
        return;
    // addImageAttributesData: pictures are not shown inside the text here.
    if (m_workerThread) {
        m_parseAgain = true;
        return;
    }
    QString copy = m_document->toRawText();
    m_parseAgain = false;
    m_highlightSeedRandomNumber = copy.size();
    m_parsedRevision = m_editCounter;
    m_lastBlockCount = m_document->blockCount();
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    m_workerCancelled = cancelled;
    const int extensions = m_extensions;
    m_workerThread = QThread::create([this, copy = std::move(copy), extensions, cancelled]() mutable {
        std::shared_ptr<const HGParseResult> result = HGParseResult::parseText(std::move(copy), extensions);
        if (cancelled->load())
            return;
        // The result reaches the main thread before the thread's exit does,
        // as a blocking hand-over would, without the deadlock that a
        // blocking call risks when the highlighter is torn down meanwhile.
        QMetaObject::invokeMethod(this, [this, result] { parserDidParse(result); }, Qt::QueuedConnection);
    });
    connect(m_workerThread, &QThread::finished, this, &HGMarkdownHighlighter::threadDidExit);
    emit parsingStarted(m_highlightSeedRandomNumber);
    m_workerThread->start();
}

void HGMarkdownHighlighter::parseAndHighlightNow()
{
    m_updateTimer->stop();
    requestParsing();
}

void HGMarkdownHighlighter::parserDidParse(std::shared_ptr<const HGParseResult> result)
{
    if (m_parseAgain || !m_isActive) {
        emit parseResultDropped();
        return;
    }
    m_cachedElements = std::move(result);
    m_cachedLength = m_highlightSeedRandomNumber;
    m_cachedRevision = m_parsedRevision;
    emit docOutlineDidChange(m_cachedElements->outline);
    if (!m_firstPassDone && isCachedResultCurrent()) {
        m_firstPassDone = true;
        applyVisibleRangeHighlighting();
        applyHighlightingWithRange({0, m_cachedLength});
        emit didParseAllAndHighlight();
        ORVNotificationCenter::defaultCenter()->postNotification(kHGMarkdownHighlighterDidParseAllAndHighlight, this);
    } else {
        applyVisibleRangeHighlighting();
    }
}

void HGMarkdownHighlighter::threadDidExit()
{
    if (m_workerThread) {
        m_workerThread->wait();
        delete m_workerThread;
        m_workerThread = nullptr;
    }
    emit parsingFinished();
    if (m_parseAgain && m_isActive)
        requestParsing();
}

// ---- Styling

bool HGMarkdownHighlighter::isCachedResultCurrent() const
{
    return m_cachedElements && m_document && m_cachedLength == m_document->characterCount() - 1 &&
           m_cachedRevision == m_editCounter;
}

QList<HGOutlineItem> HGMarkdownHighlighter::docOutline() const
{
    return m_cachedElements ? m_cachedElements->outline : QList<HGOutlineItem>();
}

void HGMarkdownHighlighter::highlightNow() { applyVisibleRangeHighlighting(); }

void HGMarkdownHighlighter::highlightAllNow()
{
    if (m_document)
        applyHighlightingWithRange({0, m_document->characterCount() - 1});
}

void HGMarkdownHighlighter::highlightVisibleRect()
{
    if (m_isActive)
        m_highlightTimer->start(kHighlightAfterScrollMilliseconds);
}

void HGMarkdownHighlighter::applyVisibleRangeHighlighting()
{
    if (!isCachedResultCurrent())
        return; // stale: the next parse styles the text
    const qsizetype length = m_document->characterCount() - 1;
    HGTextRange range = m_visibleRange ? m_visibleRange() : HGTextRange{0, length};
    for (const HGTextRange &r : std::as_const(m_editedRangeDataArr)) {
        const qsizetype lo = qMin(range.location, r.location);
        range = {lo, qMax(range.end(), r.end()) - lo};
    }
    m_editedRangeDataArr.clear();
    m_lastHighlightRange = range;
    applyHighlightingWithRange(range);
}

void HGMarkdownHighlighter::applyHighlightingWithRange(HGTextRange range)
{
    if (!isCachedResultCurrent())
        return;
    const qsizetype length = m_document->characterCount() - 1;
    const qsizetype from = qBound<qsizetype>(0, range.location, length);
    const qsizetype to = qBound<qsizetype>(from, range.end(), length);
    const HGParseResult &parsed = *m_cachedElements;

    QTextBlock block = m_document->findBlock(int(from));
    const QTextBlock last = m_document->findBlock(int(qMax(from, to - 1)));
    int dirtyFrom = -1;
    int dirtyTo = -1;
    while (block.isValid()) {
        QList<QTextLayout::FormatRange> formats;
        for (const HGBlockSpan &s : parsed.spansOfBlock(block.blockNumber())) {
            const auto it = m_formatOfType.constFind(int(s.type));
            if (it == m_formatOfType.cend())
                continue;
            QTextCharFormat format = it.value();
            if (makeLinksClickable && isLinkType(s.type)) {
                const QString address = parsed.linkAddressAt(block.position() + s.start);
                if (!address.isEmpty()) {
                    format.setAnchor(true);
                    format.setAnchorHref(address);
                }
            }
            formats.append({s.start, s.length, format});
        }
        QTextLayout *layout = block.layout();
        if (layout && layout->formats() != formats) {
            layout->setFormats(formats);
            if (dirtyFrom < 0)
                dirtyFrom = block.position();
            dirtyTo = block.position() + block.length();
        }
        if (block == last)
            break;
        block = block.next();
    }
    if (dirtyFrom >= 0)
        m_document->markContentsDirty(dirtyFrom, dirtyTo - dirtyFrom);
    // fixCurrentTypingAttribute: the view types with its own font and the
    // styles are layout formats, so nothing leaks into typed text.
    const HGTextRange styled{from, to - from};
    emit didHighlightVisibleRange(styled);
    ORVNotificationCenter::defaultCenter()->postNotification(
        kHGMarkdownHighlighterDidHighlightVisibleRange, this,
        {{QStringLiteral("location"), qint64(styled.location)}, {QStringLiteral("length"), qint64(styled.length)}});
}
