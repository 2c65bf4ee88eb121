#pragma once

#include "site/MGTemplateEngineMatcher.h"

#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVarLengthArray>

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

// The matcher that finds markers and expressions by the engine's delimiters.
//
// What a match is, is the regular expression regex() builds from the
// delimiters, in ICU's syntax: for markers, and then the same for expressions,
//
//   (\Q{%\E)(?:\s+)?(.*?)(?:(?:\s+)?\Q|\E(?:\s+)?(.*?))?(?:\s+)?\Q%}\E
//
// so a marker is the start delimiter, the body, optionally the filter
// delimiter and the filter text, and the end delimiter, with white space
// around the parts. The body and the filter text stay on one line; the white
// space around them may span lines. The first end delimiter ends the match and
// the first filter delimiter ends the body, also inside quotes.
//
// The matcher doesn't run a regular-expression engine. It finds the same
// leftmost match with a scanner that never backtracks, in time linear in the
// text (a backtracking engine takes cubic time on a long line of unclosed
// delimiters and filter bars, which a theme file can hold). The tests run both
// on generated texts to keep them equal. The scanner relies on the default
// delimiters' shape: none empty, and the filter and end delimiters not
// beginning with white space.
//
// Matches are kept per template: a loop body scanned twenty times is parsed
// once, and the few most recent templates stay parsed from run to run, since a
// site build expands the same templates for every page.
//
// Owned by its engine; used on the engine's thread.
class ICUTemplateMatcher : public MGTemplateEngineMatcher
{
public:
    explicit ICUTemplateMatcher(MGTemplateEngine *engine = nullptr);
    ~ICUTemplateMatcher() override;

    MGTemplateEngine *engine() const override { return m_engine; }
    void setEngine(MGTemplateEngine *engine) override { m_engine = engine; }
    void engineSettingsChanged() override;
    const MGTemplateMatch *firstMarkerWithinRange(MGTemplateRange range) override;

    // The regular expression of a match, as above (set by
    // engineSettingsChanged).
    const QString &regex() const { return _regex; }
    static QString regexForDelimiters(const QString &markerStart, const QString &markerEnd,
                                      const QString &expressionStart, const QString &expressionEnd,
                                      const QString &filter);

    // Splits a marker's body or filter text into words: a double-quoted or
    // single-quoted text (a quote after a backslash doesn't close it; quotes
    // are dropped, backslashes kept) or a run of non-space characters. An
    // empty quoted text ends the list.
    static QStringList argumentsFromString(QStringView text);
    // The same as (start, length) of each word in `text`.
    static QVarLengthArray<std::pair<qsizetype, qsizetype>, 8> wordRanges(QStringView text);

private:
    struct ParsedTemplate;
    std::unique_ptr<MGTemplateMatch> scan(MGTemplateRange range) const;

    MGTemplateEngine *m_engine = nullptr; // not owned
    QString _markerStartDelimiter;
    QString _markerEndDelimiter;
    QString _expressionStartDelimiter;
    QString _expressionEndDelimiter;
    QString _filterDelimiter;
    QString _templateString;
    QString _regex;
    // Most recent first. Four covers a site build, which alternates between
    // a post template and a list template at most; more would only hold
    // memory.
    static constexpr size_t kRecentTemplates = 4;
    std::vector<std::unique_ptr<ParsedTemplate>> m_recent;
    std::unique_ptr<MGTemplateMatch> m_unkept; // the last match of a range that isn't kept
};
