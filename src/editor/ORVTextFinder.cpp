#include "editor/ORVTextFinder.h"

std::optional<QRegularExpression> ORVTextFinder::patternFor(const QString &needle, const ORVFindOptions &options,
                                                            QString *error)
{
    if (needle.isEmpty()) {
        if (error)
            *error = QStringLiteral("Nothing to find");
        return std::nullopt;
    }
    QString source = options.regularExpression ? needle : QRegularExpression::escape(needle);
    if (options.wholeWord)
        source = QStringLiteral("\\b(?:%1)\\b").arg(source);
    QRegularExpression::PatternOptions po = QRegularExpression::MultilineOption | QRegularExpression::UseUnicodePropertiesOption;
    if (!options.caseSensitive)
        po |= QRegularExpression::CaseInsensitiveOption;
    QRegularExpression re(source, po);
    if (!re.isValid()) {
        if (error)
            *error = QStringLiteral("Invalid regular expression: %1").arg(re.errorString());
        return std::nullopt;
    }
    return re;
}

ORVEditRange ORVTextFinder::findNext(const QString &text, const QRegularExpression &pattern, qsizetype from,
                                     bool backwards, bool wrapAround)
{
    from = qBound<qsizetype>(0, from, text.size());
    const auto firstFrom = [&](qsizetype start, qsizetype limit) -> ORVEditRange {
        QRegularExpressionMatchIterator it = pattern.globalMatch(text, start);
        while (it.hasNext()) {
            const QRegularExpressionMatch m = it.next();
            if (m.capturedStart() >= limit)
                break;
            if (m.capturedLength() > 0)
                return {m.capturedStart(), m.capturedLength()};
        }
        return {ORVEditRange::kNotFound, 0};
    };
    const auto lastBefore = [&](qsizetype start, qsizetype limit) -> ORVEditRange {
        ORVEditRange found{ORVEditRange::kNotFound, 0};
        QRegularExpressionMatchIterator it = pattern.globalMatch(text, start);
        while (it.hasNext()) {
            const QRegularExpressionMatch m = it.next();
            if (m.capturedEnd() > limit)
                break;
            if (m.capturedLength() > 0)
                found = {m.capturedStart(), m.capturedLength()};
        }
        return found;
    };
    if (!backwards) {
        ORVEditRange r = firstFrom(from, text.size() + 1);
        if (r.location < 0 && wrapAround)
            r = firstFrom(0, from);
        return r;
    }
    ORVEditRange r = lastBefore(0, from);
    if (r.location < 0 && wrapAround)
        r = lastBefore(from, text.size());
    return r;
}

qsizetype ORVTextFinder::countMatches(const QString &text, const QRegularExpression &pattern)
{
    qsizetype n = 0;
    QRegularExpressionMatchIterator it = pattern.globalMatch(text);
    while (it.hasNext()) {
        if (it.next().capturedLength() > 0)
            ++n;
    }
    return n;
}

QString ORVTextFinder::replacementFor(const QRegularExpressionMatch &match, const QString &replacement, bool templates)
{
    if (!templates)
        return replacement;
    QString out;
    out.reserve(replacement.size());
    for (qsizetype i = 0; i < replacement.size(); ++i) {
        const QChar c = replacement.at(i);
        const bool dollar = c == QLatin1Char('$');
        if ((dollar || c == QLatin1Char('\\')) && i + 1 < replacement.size()) {
            const QChar next = replacement.at(i + 1);
            if (dollar && next == QLatin1Char('$')) {
                out += QLatin1Char('$');
                ++i;
                continue;
            }
            if (next.isDigit()) {
                int group = next.digitValue();
                qsizetype used = 1;
                // "$12" names group 12 when there is one; "\" takes one digit.
                if (dollar && i + 2 < replacement.size() && replacement.at(i + 2).isDigit()) {
                    const int two = group * 10 + replacement.at(i + 2).digitValue();
                    if (two <= match.lastCapturedIndex()) {
                        group = two;
                        used = 2;
                    }
                }
                out += match.captured(group);
                i += used;
                continue;
            }
        }
        out += c;
    }
    return out;
}

qsizetype ORVTextFinder::replaceAll(ORVTextBuffer &buffer, const QRegularExpression &pattern, const QString &replacement,
                                    bool templates)
{
    const QString &text = buffer.string();
    QString rebuilt;
    qsizetype copiedTo = -1;
    qsizetype first = -1;
    qsizetype n = 0;
    QRegularExpressionMatchIterator it = pattern.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        if (m.capturedLength() == 0)
            continue;
        if (first < 0) {
            first = m.capturedStart();
            copiedTo = first;
        }
        rebuilt += QStringView(text).mid(copiedTo, m.capturedStart() - copiedTo);
        rebuilt += replacementFor(m, replacement, templates);
        copiedTo = m.capturedEnd();
        ++n;
    }
    if (n == 0)
        return 0;
    // One edit from the first match to the end of the last: one undo step,
    // and the text outside it is not touched.
    buffer.replaceCharactersInRange({first, copiedTo - first}, rebuilt);
    return n;
}

bool ORVTextFinder::replaceSelectionAndFindNext(ORVTextBuffer &buffer, const QRegularExpression &pattern,
                                                const QString &replacement, bool templates, bool wrapAround)
{
    const ORVEditRange sel = buffer.selectedRange();
    bool replaced = false;
    if (!sel.isEmpty()) {
        const QRegularExpressionMatch m =
            pattern.match(buffer.string(), sel.location, QRegularExpression::NormalMatch,
                          QRegularExpression::AnchorAtOffsetMatchOption);
        if (m.hasMatch() && m.capturedLength() == sel.length) {
            buffer.replaceCharactersInRange(sel, replacementFor(m, replacement, templates));
            replaced = true;
        }
    }
    const ORVEditRange next =
        findNext(buffer.string(), pattern, buffer.selectedRange().end(), false, wrapAround);
    if (next.location >= 0)
        buffer.setSelectedRange(next);
    return replaced;
}
