#include "site/ICUTemplateMatcher.h"

#include "site/MGTemplateEngine.h"
#include "site/templatetext.h"

#include <algorithm>
#include <optional>

using mgtemplate::isLineTerminator;
using mgtemplate::isSpace;

struct ICUTemplateMatcher::ParsedTemplate {
    QString text;
    // The first match at or after a location, scanning to the template's
    // end; a null entry records that there is none.
    struct Kept {
        std::unique_ptr<MGTemplateMatch> match; // null: none from this location
        // The entry for the location behind `match`, once asked for: a run
        // asks for it next, so most look-ups are this one step.
        const Kept *next = nullptr;
    };
    std::unordered_map<qsizetype, Kept> firstMatchFrom; // nodes stay put, so `next` stays valid
    const Kept *last = nullptr;                          // the entry returned last
};

namespace
{

enum Kind { MarkerKind = 0, ExpressionKind = 1 };

// Where the parts of one match lie.
struct Hit {
    Kind kind;
    qsizetype start, end;             // the whole match
    qsizetype bodyStart, bodyEnd;     // the body
    qsizetype filterStart, filterEnd; // the filter text; equal when there is none
};

// One search for the leftmost match in [from, end) of a text. It follows the
// matcher's regular expression step by step, with two observations that make
// backtracking unnecessary:
//
// - The body can only end where white space ends at a filter or end
//   delimiter: at the first non-space character c behind the body, either the
//   filter delimiter starts and a valid filter text follows, or the end
//   delimiter starts. The shortest body wins, so candidates c are tried in
//   order, filter first. The body may not cross a line end, so the scan of
//   candidates stops at the first white-space run that holds one (its end is
//   the last candidate).
// - A filter text behind the filter delimiter and its white space at g runs to
//   the first end delimiter k at or after g, less the white space before k,
//   and is valid when no line end lies before that.
//
// Two memos keep a search linear: when the attempt at one start delimiter
// fails, every later start of the same kind whose body would begin before the
// first line end seen fails as well (it could only see a subset of the same
// candidates); and the next end delimiter or line end from a position is
// remembered for the positions up to it.
class Scanner
{
public:
    Scanner(QStringView text, qsizetype end, const QString *starts, const QString *ends,
            const QString &filter)
        : m_text(text.utf16()), m_end(end), m_filter(filter)
    {
        for (int k = 0; k < 2; ++k) {
            m_start[k] = starts[k];
            m_endDelimiter[k] = ends[k];
        }
    }

    std::optional<Hit> find(qsizetype from)
    {
        const char16_t a = m_start[0].isEmpty() ? 0 : m_start[0][0].unicode();
        const char16_t b = m_start[1].isEmpty() ? 0 : m_start[1][0].unicode();
        for (qsizetype p = from; p < m_end; ++p) {
            // Skip quickly to the next possible start delimiter.
            const char16_t *it = m_text + p;
            const char16_t *stop = m_text + m_end;
            if (a == b) {
                it = std::find(it, stop, a);
            } else {
                while (it != stop && *it != a && *it != b)
                    ++it;
            }
            if (it == stop)
                return std::nullopt;
            p = it - m_text;
            if (std::optional<Hit> h = tryAt(p, MarkerKind))
                return h;
            if (std::optional<Hit> h = tryAt(p, ExpressionKind))
                return h;
        }
        return std::nullopt;
    }

private:
    struct KindMemo {
        qsizetype failedUpTo = -1; // starts whose body begins at or before this fail
        qsizetype stopFrom = -1;   // no end delimiter and no line end in [stopFrom, stopAt)
        qsizetype stopAt = -1;
    };

    bool startsAt(qsizetype pos, QStringView delimiter) const
    {
        const qsizetype n = delimiter.size();
        if (n == 0 || n > m_end - pos)
            return false;
        const char16_t *d = delimiter.utf16();
        const char16_t *t = m_text + pos;
        // Delimiters are a character or two: compare inline, not by call.
        for (qsizetype i = 0; i < n; ++i) {
            if (t[i] != d[i])
                return false;
        }
        return true;
    }

    qsizetype skipSpace(qsizetype i) const
    {
        while (i < m_end && isSpace(m_text[i]))
            ++i;
        return i;
    }

    // The first position at or after g where the end delimiter starts or a
    // line ends; m_end when neither.
    qsizetype nextStop(qsizetype g, Kind kind)
    {
        KindMemo &memo = m_memo[kind];
        if (memo.stopFrom >= 0 && g >= memo.stopFrom && g <= memo.stopAt)
            return memo.stopAt;
        const QStringView e = m_endDelimiter[kind];
        qsizetype m = g;
        while (m < m_end && !isLineTerminator(m_text[m]) && !startsAt(m, e))
            ++m;
        memo.stopFrom = g;
        memo.stopAt = m;
        return m;
    }

    // The filter text behind a filter delimiter that ends at `afterFilter`.
    bool filterText(qsizetype afterFilter, Kind kind, Hit *hit)
    {
        const QStringView e = m_endDelimiter[kind];
        const qsizetype g = skipSpace(afterFilter);
        const qsizetype m = nextStop(g, kind);
        qsizetype endAt;
        if (m >= m_end)
            return false;
        if (startsAt(m, e)) {
            endAt = m;
        } else {
            // A line end: only white space may follow it up to the end
            // delimiter.
            endAt = skipSpace(m);
            if (!startsAt(endAt, e))
                return false;
        }
        qsizetype h = endAt;
        while (h > g && isSpace(m_text[h - 1]))
            --h;
        hit->filterStart = g;
        hit->filterEnd = h;
        hit->end = endAt + e.size();
        return true;
    }

    // The body ends at bodyEnd and the next non-space character is at c: a
    // match if the filter delimiter with a filter text, or the end delimiter,
    // starts at c.
    bool candidate(qsizetype c, Kind kind, Hit *hit)
    {
        if (startsAt(c, m_filter) && filterText(c + m_filter.size(), kind, hit))
            return true;
        if (startsAt(c, m_endDelimiter[kind])) {
            hit->filterStart = hit->filterEnd = c;
            hit->end = c + m_endDelimiter[kind].size();
            return true;
        }
        return false;
    }

    std::optional<Hit> tryAt(qsizetype p, Kind kind)
    {
        if (!startsAt(p, m_start[kind]))
            return std::nullopt;
        KindMemo &memo = m_memo[kind];
        const qsizetype q = skipSpace(p + m_start[kind].size());
        if (q <= memo.failedUpTo)
            return std::nullopt;
        Hit hit{kind, p, 0, q, q, 0, 0};
        qsizetype i = q;
        for (;;) {
            if (candidate(i, kind, &hit))
                return hit;
            if (i >= m_end) {
                memo.failedUpTo = m_end;
                return std::nullopt;
            }
            const qsizetype j = i + 1;
            qsizetype lineEnd = -1;
            qsizetype k = j;
            while (k < m_end && isSpace(m_text[k])) {
                if (lineEnd < 0 && isLineTerminator(m_text[k]))
                    lineEnd = k;
                ++k;
            }
            hit.bodyEnd = j;
            i = k;
            if (lineEnd >= 0) {
                // The body can't reach past this line end: the character
                // behind the white space is the last candidate.
                if (candidate(i, kind, &hit))
                    return hit;
                memo.failedUpTo = lineEnd;
                return std::nullopt;
            }
        }
    }

    const char16_t *m_text;
    qsizetype m_end;
    QStringView m_start[2];
    QStringView m_endDelimiter[2];
    QStringView m_filter;
    KindMemo m_memo[2];
};

} // namespace

ICUTemplateMatcher::ICUTemplateMatcher(MGTemplateEngine *engine) : m_engine(engine) {}

ICUTemplateMatcher::~ICUTemplateMatcher() = default;

QString ICUTemplateMatcher::regexForDelimiters(const QString &markerStart, const QString &markerEnd,
                                               const QString &expressionStart, const QString &expressionEnd,
                                               const QString &filter)
{
    const QString shape =
        QStringLiteral("(\\Q%1\\E)(?:\\s+)?(.*?)(?:(?:\\s+)?\\Q%2\\E(?:\\s+)?(.*?))?(?:\\s+)?\\Q%3\\E");
    return QStringLiteral("(?m)(?:%1|%2)")
        .arg(shape.arg(markerStart, filter, markerEnd), shape.arg(expressionStart, filter, expressionEnd));
}

void ICUTemplateMatcher::engineSettingsChanged()
{
    m_unkept.reset(); // its words point into the template of the last run
    if (!m_engine)
        return;
    const MGTemplateEngine &e = *m_engine;
    if (_markerStartDelimiter != e.markerStartDelimiter() || _markerEndDelimiter != e.markerEndDelimiter() ||
        _expressionStartDelimiter != e.expressionStartDelimiter() ||
        _expressionEndDelimiter != e.expressionEndDelimiter() || _filterDelimiter != e.filterDelimiter() ||
        _regex.isEmpty()) {
        _markerStartDelimiter = e.markerStartDelimiter();
        _markerEndDelimiter = e.markerEndDelimiter();
        _expressionStartDelimiter = e.expressionStartDelimiter();
        _expressionEndDelimiter = e.expressionEndDelimiter();
        _filterDelimiter = e.filterDelimiter();
        _regex = regexForDelimiters(_markerStartDelimiter, _markerEndDelimiter, _expressionStartDelimiter,
                                    _expressionEndDelimiter, _filterDelimiter);
        m_recent.clear(); // matches depend on the delimiters
    }

    _templateString = e.templateContents();
    const auto same = std::find_if(m_recent.begin(), m_recent.end(), [&](const auto &parsed) {
        return parsed->text.size() == _templateString.size() &&
               (parsed->text.constData() == _templateString.constData() || parsed->text == _templateString);
    });
    if (same != m_recent.end()) {
        std::rotate(m_recent.begin(), same, same + 1);
        return;
    }
    if (m_recent.size() >= kRecentTemplates)
        m_recent.pop_back();
    auto parsed = std::make_unique<ParsedTemplate>();
    parsed->text = _templateString;
    m_recent.insert(m_recent.begin(), std::move(parsed));
}

const MGTemplateMatch *ICUTemplateMatcher::firstMarkerWithinRange(MGTemplateRange range)
{
    const qsizetype length = _templateString.size();
    if (range.location < 0 || range.length < 0 || range.location > length ||
        range.length > length - range.location)
        return nullptr;
    // Scans that run to the template's end (all the engine makes) are kept.
    if (range.end() != length || m_recent.empty()) {
        m_unkept = scan(range);
        return m_unkept.get();
    }
    ParsedTemplate &parsed = *m_recent.front();
    const ParsedTemplate::Kept *last = parsed.last;
    const bool behindLast = last && last->match && last->match->range.end() == range.location;
    if (behindLast && last->next) {
        parsed.last = last->next;
        return parsed.last->match.get();
    }
    auto known = parsed.firstMatchFrom.find(range.location);
    if (known == parsed.firstMatchFrom.end())
        known = parsed.firstMatchFrom.emplace(range.location, ParsedTemplate::Kept{scan(range)}).first;
    if (behindLast)
        const_cast<ParsedTemplate::Kept *>(last)->next = &known->second;
    parsed.last = &known->second;
    return known->second.match.get();
}

std::unique_ptr<MGTemplateMatch> ICUTemplateMatcher::scan(MGTemplateRange range) const
{
    const QString starts[2] = {_markerStartDelimiter, _expressionStartDelimiter};
    const QString ends[2] = {_markerEndDelimiter, _expressionEndDelimiter};
    Scanner scanner(_templateString, range.end(), starts, ends, _filterDelimiter);
    const std::optional<Hit> hit = scanner.find(range.location);
    if (!hit)
        return nullptr;

    auto match = std::make_unique<MGTemplateMatch>();
    const QStringView text(_templateString);
    match->range = {hit->start, hit->end - hit->start};
    match->type = hit->kind == MarkerKind ? MGTemplateMatch::Type::Marker : MGTemplateMatch::Type::Expression;
    if (hit->bodyEnd > hit->bodyStart) {
        // An expression's words point into the template, which the record's
        // owner keeps: no copies, and variable look-ups read the template's
        // own memory. A marker's words are copied, since handlers may keep
        // them (as variable names, or in block records) beyond the template.
        const bool raw = hit->kind == ExpressionKind;
        const auto words = wordRanges(text.mid(hit->bodyStart, hit->bodyEnd - hit->bodyStart));
        for (qsizetype w = 0; w < words.size(); ++w) {
            const QChar *at = text.data() + hit->bodyStart + words[w].first;
            const QString word =
                raw ? QString::fromRawData(at, words[w].second) : QString(at, words[w].second);
            if (w == 0)
                match->name = word;
            else
                match->args.append(word);
        }
    }
    if (hit->filterEnd > hit->filterStart) {
        // `date_format: "yyyy"` reads as `date_format "yyyy"`: the first colon
        // and the white space behind it become one blank.
        QString filterText = text.mid(hit->filterStart, hit->filterEnd - hit->filterStart).toString();
        const qsizetype colon = filterText.indexOf(QLatin1Char(':'));
        if (colon >= 0) {
            qsizetype after = colon + 1;
            while (after < filterText.size() && isSpace(filterText[after].unicode()))
                ++after;
            filterText.replace(colon, after - colon, QStringLiteral(" "));
        }
        QStringList words = argumentsFromString(filterText);
        if (!words.isEmpty()) {
            match->filter = words.takeFirst();
            match->filterArgs = std::move(words);
        }
    }
    return match;
}

QStringList ICUTemplateMatcher::argumentsFromString(QStringView text)
{
    QStringList words;
    for (const auto &[start, length] : wordRanges(text))
        words.append(text.mid(start, length).toString());
    return words;
}

QVarLengthArray<std::pair<qsizetype, qsizetype>, 8> ICUTemplateMatcher::wordRanges(QStringView text)
{
    // Each word is the leftmost match of "(.*?)(?<!\\)"|'(.*?)(?<!\\)'|(\S+)"
    // (the first two with their quotes) behind the previous one.
    QVarLengthArray<std::pair<qsizetype, qsizetype>, 8> words;
    const qsizetype n = text.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = text[i];
        if (isSpace(c.unicode())) {
            ++i;
            continue;
        }
        if (c == u'"' || c == u'\'') {
            qsizetype close = -1;
            for (qsizetype j = i + 1; j < n && !isLineTerminator(text[j].unicode()); ++j) {
                if (text[j] == c && text[j - 1] != u'\\') {
                    close = j;
                    break;
                }
            }
            if (close >= 0) {
                if (close == i + 1)
                    return words; // an empty quoted text ends the list
                words.append({i + 1, close - i - 1});
                i = close + 1;
                continue;
            }
        }
        qsizetype j = i;
        while (j < n && !isSpace(text[j].unicode()))
            ++j;
        words.append({i, j - i});
        i = j;
    }
    return words;
}
