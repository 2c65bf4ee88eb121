#include "core/ORVTextViewStateData.h"

namespace {

QVariantMap rangeArchive(const ORVTextRange &r)
{
    return {{QStringLiteral("location"), r.location}, {QStringLiteral("length"), r.length}};
}

ORVTextRange rangeFrom(const QVariant &v)
{
    const QVariantMap m = v.toMap();
    return {m.value(QStringLiteral("location")).toULongLong(), m.value(QStringLiteral("length")).toULongLong()};
}

} // namespace

ORVTextViewStateData::ORVTextViewStateData(const QRectF &visibleRect, const ORVTextRange &selectedRange,
                                           const ORVTextRange &charRange)
    : selectedRange(selectedRange), charRange(charRange), visibleRect(visibleRect)
{
}

QVariantMap ORVTextViewStateData::archive() const
{
    return {
        {QStringLiteral("activeNumber"), activeNumber},
        {QStringLiteral("selectedRange"), rangeArchive(selectedRange)},
        {QStringLiteral("charRange"), rangeArchive(charRange)},
        {QStringLiteral("visibleRect"),
         QVariantMap{{QStringLiteral("x"), visibleRect.x()},
                     {QStringLiteral("y"), visibleRect.y()},
                     {QStringLiteral("width"), visibleRect.width()},
                     {QStringLiteral("height"), visibleRect.height()}}},
    };
}

std::optional<ORVTextViewStateData> ORVTextViewStateData::fromArchive(const QVariant &archive)
{
    if (archive.typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    const QVariantMap m = archive.toMap();
    if (!m.contains(QStringLiteral("activeNumber")))
        return std::nullopt;
    ORVTextViewStateData s;
    s.activeNumber = m.value(QStringLiteral("activeNumber")).toLongLong();
    s.selectedRange = rangeFrom(m.value(QStringLiteral("selectedRange")));
    s.charRange = rangeFrom(m.value(QStringLiteral("charRange")));
    const QVariantMap r = m.value(QStringLiteral("visibleRect")).toMap();
    s.visibleRect = QRectF(r.value(QStringLiteral("x")).toDouble(), r.value(QStringLiteral("y")).toDouble(),
                           r.value(QStringLiteral("width")).toDouble(), r.value(QStringLiteral("height")).toDouble());
    return s;
}

void ORVTextViewStateData::ageTextViewStates(QHash<QString, ORVTextViewStateData> &states)
{
    for (auto it = states.begin(); it != states.end();) {
        it->activeNumber += 1;
        if (it->activeNumber > kMaximumActiveNumber)
            it = states.erase(it);
        else
            ++it;
    }
}
