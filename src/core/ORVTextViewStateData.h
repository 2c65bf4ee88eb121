#pragma once

#include <QHash>
#include <QRectF>
#include <QString>
#include <QVariantMap>

#include <optional>

// A range of text in UTF-16 units, as the editor counts.
struct ORVTextRange {
    quint64 location = 0;
    quint64 length = 0;
    bool operator==(const ORVTextRange &) const = default;
};

// Where a text view stood in a document (selection, first visible
// character, scroll position), to give the view back its place when the
// document opens again. Holds no text. A plain, copyable value.
class ORVTextViewStateData
{
public:
    ORVTextViewStateData() = default;
    // initWithVisibleRect:selectedRange:charRange:
    ORVTextViewStateData(const QRectF &visibleRect, const ORVTextRange &selectedRange, const ORVTextRange &charRange);

    // Starts since the document was last opened; past kMaximumActiveNumber
    // the entry is forgotten.
    qint64 activeNumber = 0;
    ORVTextRange selectedRange;
    ORVTextRange charRange;
    QRectF visibleRect;

    bool operator==(const ORVTextViewStateData &) const = default;

    // The archive of one entry (the fields by name), and back; nullopt for
    // a record that is not one.
    QVariantMap archive() const;
    static std::optional<ORVTextViewStateData> fromArchive(const QVariant &archive);

    // The ageing each start applies: every entry's counter grows by one, and
    // entries above the limit go. An entry thus lives for 365 starts
    // without the document being opened.
    static void ageTextViewStates(QHash<QString, ORVTextViewStateData> &states);
    static constexpr qint64 kMaximumActiveNumber = 365;
};
