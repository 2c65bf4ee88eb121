#include "library/ORVListDataItem.h"

ORVListDataItem::~ORVListDataItem() = default;

const QString &ORVListDataItem::forSortTitle() const
{
    if (!m_forSortTitleMade) {
        m_forSortTitle = stringByWellToDigitSortString(m_title);
        m_forSortTitleMade = true;
    }
    return m_forSortTitle;
}

QString ORVListDataItem::stringByWellToDigitSortString(const QString &text)
{
    // At most seven runs are padded: enough to order dates and numbered
    // parts, and it bounds the work on titles full of numbers.
    constexpr int kMaxReplacedRuns = 7;
    QString out;
    out.reserve(text.size() + 16);
    int replaced = 0;
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n) {
        const QChar c = text.at(i);
        if (c < QLatin1Char('0') || c > QLatin1Char('9') || replaced >= kMaxReplacedRuns) {
            out.append(c);
            ++i;
            continue;
        }
        qsizetype end = i;
        while (end < n && text.at(end) >= QLatin1Char('0') && text.at(end) <= QLatin1Char('9'))
            ++end;
        const QStringView run = QStringView(text).mid(i, end - i);
        qsizetype firstNonZero = 0;
        while (firstNonZero < run.size() && run.at(firstNonZero) == QLatin1Char('0'))
            ++firstNonZero;
        if (firstNonZero == run.size()) {
            out.append(run); // value 0: stays, not counted
        } else {
            const QStringView digits = run.mid(firstNonZero);
            for (qsizetype pad = digits.size(); pad < 8; ++pad)
                out.append(QLatin1Char('0'));
            out.append(digits);
            ++replaced;
        }
        i = end;
    }
    return out;
}
