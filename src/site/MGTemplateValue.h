#pragma once

#include <QString>
#include <QStringView>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

class QJsonValue;
class MGTemplateValue;

// The containers of template values. Both are values themselves: copies
// share their elements until one of them is changed (copy on write), so
// handing a large list to a template costs one reference count, and a
// template that assigns into a variable never changes the caller's data.
//
// Not thread-safe for concurrent writes to one object; separate copies may be
// used and changed on separate threads.

// An ordered list of values.
class MGTemplateList
{
public:
    MGTemplateList() = default;
    MGTemplateList(std::initializer_list<MGTemplateValue> values);

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    // Index must be in [0, size()).
    const MGTemplateValue &at(qsizetype index) const;
    // Detaches from other copies; index must be in [0, size()).
    MGTemplateValue &mutableAt(qsizetype index);
    void append(MGTemplateValue value);
    void reserve(qsizetype size);

    const MGTemplateValue *begin() const;
    const MGTemplateValue *end() const;

    // True when both share the same elements (a cheap identity test).
    bool sharesDataWith(const MGTemplateList &other) const;
    bool operator==(const MGTemplateList &other) const;

private:
    void detach();
    std::shared_ptr<std::vector<MGTemplateValue>> d; // null while empty
};

// A text-keyed dictionary. Keys are kept sorted (by UTF-16 code unit), which
// makes look-ups a binary search and printed JSON independent of the order in
// which entries were made. A 128-bit summary of the keys answers most look-ups
// of absent keys without a search: templates ask every scope for a name in
// turn, and most scopes don't hold it.
class MGTemplateMap
{
public:
    using Entry = std::pair<QString, MGTemplateValue>;

    MGTemplateMap() = default;
    MGTemplateMap(std::initializer_list<Entry> entries);

    qsizetype size() const;
    bool isEmpty() const { return size() == 0; }
    // The value under key, or null when absent.
    inline const MGTemplateValue *find(QStringView key) const;
    // A key with its summary bit worked out once, for asking several maps.
    struct Probe {
        explicit Probe(QStringView k);
        QStringView key;
        unsigned bits;
    };
    inline const MGTemplateValue *find(const Probe &probe) const;
    bool contains(QStringView key) const { return find(key) != nullptr; }
    // Detaches; null when absent.
    MGTemplateValue *findMutable(QStringView key);
    // Adds or replaces.
    void insert(const QString &key, MGTemplateValue value);
    bool remove(QStringView key);
    void reserve(qsizetype size);

    const Entry *begin() const;
    const Entry *end() const;

    bool sharesDataWith(const MGTemplateMap &other) const;
    bool operator==(const MGTemplateMap &other) const;

private:
    struct Data;
    void detach();
    std::shared_ptr<Data> d; // null while empty
};

// One value a template works with: text, number, boolean, date, colour, list
// or map, or nothing (null). Lists and maps print as compact JSON; every other
// value prints as its plain text form (toText).
class MGTemplateValue
{
public:
    enum class Type : quint8 { Null, Text, Number, Boolean, Date, Colour, List, Map };

    // A moment in time, in milliseconds since 1970-01-01T00:00:00Z.
    struct Date {
        qint64 msecsSinceEpoch = 0;
        bool operator==(const Date &) const = default;
    };
    // A colour with components in [0, 1] of the sRGB space. Components out of
    // that range (or not finite) can't be expressed as 8-bit RGB.
    struct Colour {
        double red = 0, green = 0, blue = 0, alpha = 1;
        bool operator==(const Colour &) const = default;
        // The 8-bit components, each component times 255 cut to an integer;
        // nothing when a component lies outside [0, 1].
        std::optional<std::array<int, 3>> rgb8() const;
    };

    MGTemplateValue() = default;
    MGTemplateValue(const QString &text) : m_value(text) {}
    MGTemplateValue(QString &&text) : m_value(std::move(text)) {}
    MGTemplateValue(const char *utf8) : m_value(QString::fromUtf8(utf8)) {}
    MGTemplateValue(MGTemplateList list) : m_value(std::move(list)) {}
    MGTemplateValue(MGTemplateMap map) : m_value(std::move(map)) {}
    MGTemplateValue(Date date) : m_value(date) {}
    MGTemplateValue(Colour colour) : m_value(colour) {}
    // Numbers and booleans are made explicitly, so that a literal never turns
    // into the wrong kind by an implicit conversion.
    static MGTemplateValue integer(qint64 value);
    static MGTemplateValue number(double value);
    static MGTemplateValue boolean(bool value);

    Type type() const;
    bool isNull() const { return m_value.index() == 0; }
    bool isText() const { return std::holds_alternative<QString>(m_value); }
    bool isNumber() const { return type() == Type::Number; }
    bool isList() const { return std::holds_alternative<MGTemplateList>(m_value); }
    bool isMap() const { return std::holds_alternative<MGTemplateMap>(m_value); }
    // Lists and maps, the values printed as JSON.
    bool isCollection() const { return isList() || isMap(); }

    // Accessors: null (or a default) when the value is of another type.
    const QString *text() const { return std::get_if<QString>(&m_value); }
    const MGTemplateList *list() const { return std::get_if<MGTemplateList>(&m_value); }
    const MGTemplateMap *map() const { return std::get_if<MGTemplateMap>(&m_value); }
    MGTemplateList *mutableList() { return std::get_if<MGTemplateList>(&m_value); }
    MGTemplateMap *mutableMap() { return std::get_if<MGTemplateMap>(&m_value); }
    std::optional<Date> date() const;
    std::optional<Colour> colour() const;

    // An integer as stored, or a boolean as 1 or 0; nothing for other values.
    std::optional<qint64> storedInteger() const;
    // Numbers and booleans read as a truth value: anything but zero is true.
    bool numberIsNonZero() const;
    // Whether the value has an integer reading, as numbers, booleans and
    // texts do.
    bool hasIntegerReading() const;

    // The plain text form: texts as they are; integers in decimal; other
    // numbers in the shortest form that reads back the same; booleans "1" and
    // "0"; dates in ISO 8601 in UTC ("2020-01-02T03:04:05Z", milliseconds only
    // when present); colours "#rrggbb" ("#rrggbbaa" when not opaque); lists and
    // maps as compact JSON, dates and colours inside them written as texts;
    // null as "".
    QString toText() const;
    void appendText(QString &out) const;

    // Appends the value as strict compact JSON. Returns false, leaving `out`
    // as it was, when the value holds something JSON can't express (a date, a
    // colour, a number that isn't finite). "/" is written "\/" so that the text
    // can stand inside a <script> element.
    bool appendJson(QString &out) const;
    // The same for writers that place the text themselves: the exact length
    // of the JSON form (strict: nothing when it can't be written), then the
    // text into `to`, which has room for that length; returns its end.
    std::optional<qsizetype> jsonLength(bool strict) const;
    char16_t *writeJson(char16_t *to, bool strict) const;

    // Same type and equal content. Lists and maps that share their data are
    // equal without looking inside.
    bool operator==(const MGTemplateValue &other) const;

    // Reads a JSON value. An object of the one key "$date" with an ISO 8601
    // text is a date; one of the one key "$color" with "#rrggbb" or
    // "#rrggbbaa" is a colour. Integral numbers become integers. On a badly
    // formed "$date" or "$color" returns nothing and says why in *error.
    static std::optional<MGTemplateValue> fromJson(const QJsonValue &json, QString *error = nullptr);

private:
    std::variant<std::monostate, QString, qint64, double, bool, Date, Colour, MGTemplateList, MGTemplateMap>
        m_value;
};

// ---- Inline look-up ----

namespace mgtemplatemap
{

// Code-unit order, as QString's operator< has it, inline: keys are short and
// usually differ in their first unit.
inline int compareKeys(QStringView a, QStringView b)
{
    const qsizetype n = std::min(a.size(), b.size());
    const char16_t *x = a.utf16();
    const char16_t *y = b.utf16();
    for (qsizetype i = 0; i < n; ++i) {
        if (x[i] != y[i])
            return x[i] < y[i] ? -1 : 1;
    }
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

// The two of 128 bits that stand for a key (as bit numbers in the low and
// high byte): a mix of its length and its first, second and last unit.
inline unsigned keyBits(QStringView key)
{
    const qsizetype n = key.size();
    if (n == 0)
        return 0;
    const quint64 mixed = quint64(n) | quint64(key[0].unicode()) << 16 | quint64(key[n - 1].unicode()) << 32 |
                          quint64(key[n > 1 ? 1 : 0].unicode()) << 48;
    const quint64 h = mixed * 0x9E3779B97F4A7C15ull;
    return unsigned(h >> 57) | unsigned((h >> 41) & 0x7F) << 8;
}

} // namespace mgtemplatemap

struct MGTemplateMap::Data {
    // Room for the small maps that templates make by the hundred (a loop's
    // currentLoop, a marker's new variables) in the one allocation of Data.
    QVarLengthArray<Entry, 6> entries;
    quint64 keyBits[2] = {0, 0}; // the keyBits of every key (and perhaps of removed ones)

    static bool has(const quint64 *set, unsigned bit) { return set[bit >> 6] & (quint64(1) << (bit & 63)); }
    bool mayHold(unsigned bits) const { return has(keyBits, bits & 0xFF) && has(keyBits, bits >> 8); }
    void note(QStringView key)
    {
        const unsigned bits = mgtemplatemap::keyBits(key);
        for (const unsigned bit : {bits & 0xFF, bits >> 8})
            keyBits[bit >> 6] |= quint64(1) << (bit & 63);
    }
    Entry *lowerBound(QStringView key)
    {
        return std::lower_bound(entries.begin(), entries.end(), key, [](const Entry &e, QStringView k) {
            return mgtemplatemap::compareKeys(e.first, k) < 0;
        });
    }
};

inline MGTemplateMap::Probe::Probe(QStringView k) : key(k), bits(mgtemplatemap::keyBits(k)) {}

inline const MGTemplateValue *MGTemplateMap::find(QStringView key) const
{
    return find(Probe(key));
}

inline const MGTemplateValue *MGTemplateMap::find(const Probe &probe) const
{
    if (!d || !d->mayHold(probe.bits))
        return nullptr;
    const QStringView key = probe.key;
    // Binary search by hand: most maps hold a handful of keys.
    const Entry *lo = d->entries.data();
    qsizetype count = qsizetype(d->entries.size());
    while (count > 0) {
        const qsizetype half = count / 2;
        const int c = mgtemplatemap::compareKeys(lo[half].first, key);
        if (c == 0)
            return &lo[half].second;
        if (c < 0) {
            lo += half + 1;
            count -= half + 1;
        } else {
            count = half;
        }
    }
    return nullptr;
}
