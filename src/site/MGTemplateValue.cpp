#include "site/MGTemplateValue.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace
{

// Copy on write: a container's data is copied before a change only while
// other values share it.
template <typename Data> void detachShared(std::shared_ptr<Data> &d)
{
    if (!d)
        d = std::make_shared<Data>();
    else if (d.use_count() > 1)
        d = std::make_shared<Data>(*d);
}

template <typename Container> bool equalContainers(const Container &a, const Container &b)
{
    return a.sharesDataWith(b) || (a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin()));
}

} // namespace

// ---- MGTemplateList ----

MGTemplateList::MGTemplateList(std::initializer_list<MGTemplateValue> values)
{
    if (values.size() > 0)
        d = std::make_shared<std::vector<MGTemplateValue>>(values);
}

qsizetype MGTemplateList::size() const
{
    return d ? qsizetype(d->size()) : 0;
}

const MGTemplateValue &MGTemplateList::at(qsizetype index) const
{
    return (*d)[size_t(index)];
}

MGTemplateValue &MGTemplateList::mutableAt(qsizetype index)
{
    detach();
    return (*d)[size_t(index)];
}

void MGTemplateList::append(MGTemplateValue value)
{
    detach();
    d->push_back(std::move(value));
}

void MGTemplateList::reserve(qsizetype size)
{
    detach();
    d->reserve(size_t(size));
}

const MGTemplateValue *MGTemplateList::begin() const
{
    return d ? d->data() : nullptr;
}

const MGTemplateValue *MGTemplateList::end() const
{
    return d ? d->data() + d->size() : nullptr;
}

bool MGTemplateList::sharesDataWith(const MGTemplateList &other) const
{
    return d.get() == other.d.get();
}

bool MGTemplateList::operator==(const MGTemplateList &other) const
{
    return equalContainers(*this, other);
}

void MGTemplateList::detach()
{
    detachShared(d);
}

// ---- MGTemplateMap ----

MGTemplateMap::MGTemplateMap(std::initializer_list<Entry> entries)
{
    for (const Entry &e : entries)
        insert(e.first, e.second);
}

qsizetype MGTemplateMap::size() const
{
    return d ? qsizetype(d->entries.size()) : 0;
}

MGTemplateValue *MGTemplateMap::findMutable(QStringView key)
{
    if (!d)
        return nullptr;
    if (d.use_count() > 1) {
        if (!find(key))
            return nullptr; // no copy for a key that isn't there
        detach();
    }
    // Unshared now: the entry found is this map's own.
    return const_cast<MGTemplateValue *>(find(key));
}

void MGTemplateMap::insert(const QString &key, MGTemplateValue value)
{
    detach();
    // Maps are mostly made in key order (JSON objects come sorted).
    if (d->entries.isEmpty() || mgtemplatemap::compareKeys(d->entries.back().first, key) < 0) {
        d->entries.append(Entry(key, std::move(value)));
        d->note(key);
        return;
    }
    const auto it = d->lowerBound(key);
    if (it != d->entries.end() && mgtemplatemap::compareKeys(it->first, key) == 0) {
        it->second = std::move(value);
        return;
    }
    d->entries.insert(it, Entry(key, std::move(value)));
    d->note(key);
}

void MGTemplateMap::reserve(qsizetype size)
{
    detach();
    d->entries.reserve(size);
}

bool MGTemplateMap::remove(QStringView key)
{
    if (!find(key))
        return false;
    detach();
    d->entries.erase(d->lowerBound(key));
    return true;
}

const MGTemplateMap::Entry *MGTemplateMap::begin() const
{
    return d ? d->entries.data() : nullptr;
}

const MGTemplateMap::Entry *MGTemplateMap::end() const
{
    return d ? d->entries.data() + d->entries.size() : nullptr;
}

bool MGTemplateMap::sharesDataWith(const MGTemplateMap &other) const
{
    return d.get() == other.d.get();
}

bool MGTemplateMap::operator==(const MGTemplateMap &other) const
{
    return equalContainers(*this, other);
}

void MGTemplateMap::detach()
{
    detachShared(d);
}

// ---- MGTemplateValue ----

std::optional<std::array<int, 3>> MGTemplateValue::Colour::rgb8() const
{
    const double components[3] = {red, green, blue};
    std::array<int, 3> out{};
    for (int i = 0; i < 3; ++i) {
        if (!(components[i] >= 0.0 && components[i] <= 1.0)) // also false for NaN
            return std::nullopt;
        out[size_t(i)] = int(components[i] * 255.0);
    }
    return out;
}

MGTemplateValue MGTemplateValue::integer(qint64 value)
{
    MGTemplateValue v;
    v.m_value = value;
    return v;
}

MGTemplateValue MGTemplateValue::number(double value)
{
    MGTemplateValue v;
    v.m_value = value;
    return v;
}

MGTemplateValue MGTemplateValue::boolean(bool value)
{
    MGTemplateValue v;
    v.m_value = value;
    return v;
}

MGTemplateValue::Type MGTemplateValue::type() const
{
    static constexpr Type types[] = {Type::Null, Type::Text,   Type::Number, Type::Number, Type::Boolean,
                                     Type::Date, Type::Colour, Type::List,   Type::Map};
    return types[m_value.index()];
}

std::optional<MGTemplateValue::Date> MGTemplateValue::date() const
{
    if (const Date *d = std::get_if<Date>(&m_value))
        return *d;
    return std::nullopt;
}

std::optional<MGTemplateValue::Colour> MGTemplateValue::colour() const
{
    if (const Colour *c = std::get_if<Colour>(&m_value))
        return *c;
    return std::nullopt;
}

std::optional<qint64> MGTemplateValue::storedInteger() const
{
    if (const qint64 *i = std::get_if<qint64>(&m_value))
        return *i;
    if (const bool *b = std::get_if<bool>(&m_value))
        return *b ? 1 : 0;
    return std::nullopt;
}

bool MGTemplateValue::numberIsNonZero() const
{
    if (const qint64 *i = std::get_if<qint64>(&m_value))
        return *i != 0;
    if (const double *d = std::get_if<double>(&m_value))
        return *d != 0.0;
    if (const bool *b = std::get_if<bool>(&m_value))
        return *b;
    return false;
}

bool MGTemplateValue::hasIntegerReading() const
{
    const Type t = type();
    return t == Type::Text || t == Type::Number || t == Type::Boolean;
}

namespace
{

QString hex2(int v)
{
    return QStringLiteral("%1").arg(v, 2, 16, QLatin1Char('0'));
}

QString colourText(const MGTemplateValue::Colour &c)
{
    const auto clamp = [](double v) { return std::isfinite(v) ? std::clamp(v, 0.0, 1.0) : 0.0; };
    QString out = QLatin1Char('#') + hex2(int(clamp(c.red) * 255.0)) + hex2(int(clamp(c.green) * 255.0)) +
                  hex2(int(clamp(c.blue) * 255.0));
    if (clamp(c.alpha) < 1.0)
        out += hex2(int(clamp(c.alpha) * 255.0));
    return out;
}

QString dateText(const MGTemplateValue::Date &d)
{
    const QDateTime t = QDateTime::fromMSecsSinceEpoch(d.msecsSinceEpoch, Qt::UTC);
    return t.toString(d.msecsSinceEpoch % 1000 == 0 ? Qt::ISODate : Qt::ISODateWithMs);
}

// JSON is measured first and then written in place: a list of posts is
// hundreds of small pieces, and one exact allocation beats growing a buffer.
//
// Control characters must be escaped in JSON; "/" is, so that "</script>"
// can't end a script element; U+2028 and U+2029 are, because older script
// engines read them as line ends inside a string literal.
// How many units each ASCII character adds when escaped: 0 when it stands as
// it is, 1 for a two-character escape, 5 for \uXXXX.
struct JsonEscapes {
    unsigned char extra[128];
    constexpr JsonEscapes() : extra()
    {
        for (int c = 0; c < 0x20; ++c)
            extra[c] = 5;
        for (char c : {'"', '\\', '/', '\b', '\f', '\n', '\r', '\t'})
            extra[int(c)] = 1;
    }
};
constexpr JsonEscapes kJsonEscapes;

inline unsigned jsonExtra(char16_t c)
{
    return c < 128 ? kJsonEscapes.extra[c] : (c == 0x2028 || c == 0x2029) ? 5 : 0;
}

qsizetype jsonStringLength(QStringView s)
{
    qsizetype n = 2 + s.size();
    for (const QChar ch : s)
        n += jsonExtra(ch.unicode());
    return n;
}

char16_t *writeJsonString(char16_t *to, QStringView s)
{
    static const char hex[] = "0123456789abcdef";
    *to++ = u'"';
    for (const QChar ch : s) {
        const char16_t c = ch.unicode();
        const unsigned extra = jsonExtra(c);
        if (extra == 0) {
            *to++ = c;
            continue;
        }
        *to++ = u'\\';
        switch (c) {
        case u'"':
            *to++ = u'"';
            break;
        case u'\\':
            *to++ = u'\\';
            break;
        case u'/':
            *to++ = u'/';
            break;
        case u'\b':
            *to++ = u'b';
            break;
        case u'\f':
            *to++ = u'f';
            break;
        case u'\n':
            *to++ = u'n';
            break;
        case u'\r':
            *to++ = u'r';
            break;
        case u'\t':
            *to++ = u't';
            break;
        default:
            *to++ = u'u';
            for (int shift = 12; shift >= 0; shift -= 4)
                *to++ = char16_t(hex[(c >> shift) & 0xF]);
        }
    }
    *to++ = u'"';
    return to;
}

char16_t *writeAscii(char16_t *to, QStringView text)
{
    std::copy(text.utf16(), text.utf16() + text.size(), to);
    return to + text.size();
}

char16_t *writeLatin1(char16_t *to, const char *text)
{
    while (*text)
        *to++ = char16_t(*text++);
    return to;
}

QString doubleText(double d)
{
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
}

} // namespace

std::optional<qsizetype> MGTemplateValue::jsonLength(bool strict) const
{
    switch (m_value.index()) {
    case 0:
        return 4;
    case 1:
        return jsonStringLength(std::get<QString>(m_value));
    case 2:
        return QString::number(std::get<qint64>(m_value)).size();
    case 3: {
        const double d = std::get<double>(m_value);
        if (!std::isfinite(d))
            return strict ? std::nullopt : std::optional<qsizetype>(4);
        return doubleText(d).size();
    }
    case 4:
        return std::get<bool>(m_value) ? 4 : 5;
    case 5:
    case 6:
        if (strict)
            return std::nullopt;
        return jsonStringLength(toText());
    case 7: {
        const MGTemplateList &list = std::get<MGTemplateList>(m_value);
        qsizetype n = 2 + std::max<qsizetype>(0, list.size() - 1);
        for (const MGTemplateValue &v : list) {
            const std::optional<qsizetype> part = v.jsonLength(strict);
            if (!part)
                return std::nullopt;
            n += *part;
        }
        return n;
    }
    case 8: {
        const MGTemplateMap &map = std::get<MGTemplateMap>(m_value);
        qsizetype n = 2 + std::max<qsizetype>(0, map.size() - 1);
        for (const MGTemplateMap::Entry &e : map) {
            const std::optional<qsizetype> part = e.second.jsonLength(strict);
            if (!part)
                return std::nullopt;
            n += jsonStringLength(e.first) + 1 + *part;
        }
        return n;
    }
    }
    return std::nullopt;
}

char16_t *MGTemplateValue::writeJson(char16_t *to, bool strict) const
{
    switch (m_value.index()) {
    case 0:
        return writeLatin1(to, "null");
    case 1:
        return writeJsonString(to, std::get<QString>(m_value));
    case 2:
        return writeAscii(to, QString::number(std::get<qint64>(m_value)));
    case 3: {
        const double d = std::get<double>(m_value);
        return std::isfinite(d) ? writeAscii(to, doubleText(d)) : writeLatin1(to, "null");
    }
    case 4:
        return writeLatin1(to, std::get<bool>(m_value) ? "true" : "false");
    case 5:
    case 6:
        return writeJsonString(to, toText());
    case 7: {
        *to++ = u'[';
        bool first = true;
        for (const MGTemplateValue &v : std::get<MGTemplateList>(m_value)) {
            if (!first)
                *to++ = u',';
            first = false;
            to = v.writeJson(to, strict);
        }
        *to++ = u']';
        return to;
    }
    case 8: {
        *to++ = u'{';
        bool first = true;
        for (const MGTemplateMap::Entry &e : std::get<MGTemplateMap>(m_value)) {
            if (!first)
                *to++ = u',';
            first = false;
            to = writeJsonString(to, e.first);
            *to++ = u':';
            to = e.second.writeJson(to, strict);
        }
        *to++ = u'}';
        return to;
    }
    }
    return to;
}

namespace
{

void appendJsonForm(const MGTemplateValue &value, QString &out, qsizetype length)
{
    const qsizetype old = out.size();
    out.resize(old + length);
    value.writeJson(reinterpret_cast<char16_t *>(out.data()) + old, false);
}

} // namespace

bool MGTemplateValue::appendJson(QString &out) const
{
    const std::optional<qsizetype> length = jsonLength(true);
    if (!length)
        return false;
    appendJsonForm(*this, out, *length);
    return true;
}

void MGTemplateValue::appendText(QString &out) const
{
    switch (m_value.index()) {
    case 0:
        return;
    case 1:
        out += std::get<QString>(m_value);
        return;
    case 2:
        out += QString::number(std::get<qint64>(m_value));
        return;
    case 3:
        out += doubleText(std::get<double>(m_value));
        return;
    case 4:
        out += std::get<bool>(m_value) ? QLatin1Char('1') : QLatin1Char('0');
        return;
    case 5:
        out += dateText(std::get<Date>(m_value));
        return;
    case 6:
        out += colourText(std::get<Colour>(m_value));
        return;
    default:
        appendJsonForm(*this, out, *jsonLength(false));
        return;
    }
}

QString MGTemplateValue::toText() const
{
    if (const QString *t = text())
        return *t;
    QString out;
    appendText(out);
    return out;
}

bool MGTemplateValue::operator==(const MGTemplateValue &other) const
{
    return m_value == other.m_value;
}

namespace
{

std::optional<MGTemplateValue::Colour> parseColour(const QString &text)
{
    if (!text.startsWith(QLatin1Char('#')) || (text.size() != 7 && text.size() != 9))
        return std::nullopt;
    double parts[4] = {0, 0, 0, 1};
    for (int i = 0; i < (text.size() - 1) / 2; ++i) {
        bool ok = false;
        const int v = text.mid(1 + 2 * i, 2).toInt(&ok, 16);
        if (!ok)
            return std::nullopt;
        parts[i] = v / 255.0;
    }
    return MGTemplateValue::Colour{parts[0], parts[1], parts[2], parts[3]};
}

} // namespace

std::optional<MGTemplateValue> MGTemplateValue::fromJson(const QJsonValue &json, QString *error)
{
    switch (json.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return MGTemplateValue();
    case QJsonValue::Bool:
        return boolean(json.toBool());
    case QJsonValue::String:
        return MGTemplateValue(json.toString());
    case QJsonValue::Double: {
        const double d = json.toDouble();
        // Whole numbers that fit a 64-bit integer print without a fraction.
        if (std::trunc(d) == d && std::fabs(d) < 9.2e18)
            return integer(json.toInteger());
        return number(d);
    }
    case QJsonValue::Array: {
        MGTemplateList list;
        const QJsonArray array = json.toArray();
        list.reserve(array.size());
        for (const QJsonValue &item : array) {
            std::optional<MGTemplateValue> v = fromJson(item, error);
            if (!v)
                return std::nullopt;
            list.append(std::move(*v));
        }
        return MGTemplateValue(std::move(list));
    }
    case QJsonValue::Object: {
        const QJsonObject object = json.toObject();
        if (object.size() == 1 && object.contains(QLatin1String("$date"))) {
            const QString text = object.value(QLatin1String("$date")).toString();
            const QDateTime t = QDateTime::fromString(text, Qt::ISODateWithMs);
            if (!t.isValid()) {
                if (error)
                    *error =
                        QStringLiteral("\"%1\" is not an ISO 8601 date (as 2020-01-02T03:04:05Z)").arg(text);
                return std::nullopt;
            }
            return MGTemplateValue(Date{t.toMSecsSinceEpoch()});
        }
        if (object.size() == 1 && object.contains(QLatin1String("$color"))) {
            const QString text = object.value(QLatin1String("$color")).toString();
            const std::optional<Colour> c = parseColour(text);
            if (!c) {
                if (error)
                    *error = QStringLiteral("\"%1\" is not a colour (as #rrggbb or #rrggbbaa)").arg(text);
                return std::nullopt;
            }
            return MGTemplateValue(*c);
        }
        MGTemplateMap map;
        for (auto it = object.begin(); it != object.end(); ++it) {
            std::optional<MGTemplateValue> v = fromJson(it.value(), error);
            if (!v)
                return std::nullopt;
            map.insert(it.key(), std::move(*v));
        }
        return MGTemplateValue(std::move(map));
    }
    }
    return MGTemplateValue();
}
