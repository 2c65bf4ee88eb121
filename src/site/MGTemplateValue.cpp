#include "site/MGTemplateValue.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QLocale>

#include <algorithm>
#include <cmath>

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
    if (sharesDataWith(other))
        return true;
    return size() == other.size() && std::equal(begin(), end(), other.begin());
}

void MGTemplateList::detach()
{
    if (!d)
        d = std::make_shared<std::vector<MGTemplateValue>>();
    else if (d.use_count() > 1)
        d = std::make_shared<std::vector<MGTemplateValue>>(*d);
}

// ---- MGTemplateMap ----

namespace {

struct EntryKeyLess {
    bool operator()(const MGTemplateMap::Entry &e, QStringView key) const { return QStringView(e.first) < key; }
};

} // namespace

MGTemplateMap::MGTemplateMap(std::initializer_list<Entry> entries)
{
    for (const Entry &e : entries)
        insert(e.first, e.second);
}

qsizetype MGTemplateMap::size() const
{
    return d ? qsizetype(d->size()) : 0;
}

const MGTemplateValue *MGTemplateMap::find(QStringView key) const
{
    if (!d)
        return nullptr;
    const auto it = std::lower_bound(d->begin(), d->end(), key, EntryKeyLess());
    return it != d->end() && QStringView(it->first) == key ? &it->second : nullptr;
}

MGTemplateValue *MGTemplateMap::findMutable(QStringView key)
{
    if (!find(key))
        return nullptr;
    detach();
    const auto it = std::lower_bound(d->begin(), d->end(), key, EntryKeyLess());
    return &it->second;
}

void MGTemplateMap::insert(const QString &key, MGTemplateValue value)
{
    detach();
    const auto it = std::lower_bound(d->begin(), d->end(), QStringView(key), EntryKeyLess());
    if (it != d->end() && it->first == key)
        it->second = std::move(value);
    else
        d->insert(it, Entry(key, std::move(value)));
}

bool MGTemplateMap::remove(QStringView key)
{
    if (!find(key))
        return false;
    detach();
    d->erase(std::lower_bound(d->begin(), d->end(), key, EntryKeyLess()));
    return true;
}

const MGTemplateMap::Entry *MGTemplateMap::begin() const
{
    return d ? d->data() : nullptr;
}

const MGTemplateMap::Entry *MGTemplateMap::end() const
{
    return d ? d->data() + d->size() : nullptr;
}

bool MGTemplateMap::sharesDataWith(const MGTemplateMap &other) const
{
    return d.get() == other.d.get();
}

bool MGTemplateMap::operator==(const MGTemplateMap &other) const
{
    if (sharesDataWith(other))
        return true;
    return size() == other.size() && std::equal(begin(), end(), other.begin());
}

void MGTemplateMap::detach()
{
    if (!d)
        d = std::make_shared<std::vector<Entry>>();
    else if (d.use_count() > 1)
        d = std::make_shared<std::vector<Entry>>(*d);
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
    static constexpr Type types[] = {Type::Null,   Type::Text,   Type::Number, Type::Number, Type::Boolean,
                                     Type::Date,   Type::Colour, Type::List,   Type::Map};
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

std::optional<double> MGTemplateValue::numberValue() const
{
    if (const qint64 *i = std::get_if<qint64>(&m_value))
        return double(*i);
    if (const double *d = std::get_if<double>(&m_value))
        return *d;
    if (const bool *b = std::get_if<bool>(&m_value))
        return *b ? 1.0 : 0.0;
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

namespace {

void appendDouble(QString &out, double d)
{
    out += QString::number(d, 'g', QLocale::FloatingPointShortest);
}

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

void appendJsonString(QString &out, QStringView s)
{
    out += QLatin1Char('"');
    qsizetype plainFrom = 0;
    const auto flush = [&](qsizetype upTo) {
        if (upTo > plainFrom)
            out += s.mid(plainFrom, upTo - plainFrom);
    };
    for (qsizetype i = 0; i < s.size(); ++i) {
        const char16_t c = s[i].unicode();
        const char *escape = nullptr;
        switch (c) {
        case u'"': escape = "\\\""; break;
        case u'\\': escape = "\\\\"; break;
        case u'/': escape = "\\/"; break;
        case u'\b': escape = "\\b"; break;
        case u'\f': escape = "\\f"; break;
        case u'\n': escape = "\\n"; break;
        case u'\r': escape = "\\r"; break;
        case u'\t': escape = "\\t"; break;
        default:
            // Other control characters must be escaped in JSON; U+2028 and
            // U+2029 are escaped too because older script engines read them
            // as line ends inside a string literal.
            if (c >= 0x20 && c != 0x2028 && c != 0x2029)
                continue;
        }
        flush(i);
        if (escape)
            out += QLatin1String(escape);
        else
            out += QStringLiteral("\\u%1").arg(int(c), 4, 16, QLatin1Char('0'));
        plainFrom = i + 1;
    }
    flush(s.size());
    out += QLatin1Char('"');
}

} // namespace

void MGTemplateValue::appendJsonTo(QString &out, bool strict, bool *ok) const
{
    switch (m_value.index()) {
    case 0: out += QLatin1String("null"); return;
    case 1: appendJsonString(out, std::get<QString>(m_value)); return;
    case 2: out += QString::number(std::get<qint64>(m_value)); return;
    case 3: {
        const double d = std::get<double>(m_value);
        if (std::isfinite(d))
            appendDouble(out, d);
        else if (strict)
            *ok = false;
        else
            out += QLatin1String("null");
        return;
    }
    case 4: out += std::get<bool>(m_value) ? QLatin1String("true") : QLatin1String("false"); return;
    case 5:
    case 6:
        if (strict)
            *ok = false;
        else
            appendJsonString(out, toText());
        return;
    case 7: {
        out += QLatin1Char('[');
        bool first = true;
        for (const MGTemplateValue &v : std::get<MGTemplateList>(m_value)) {
            if (!first)
                out += QLatin1Char(',');
            first = false;
            v.appendJsonTo(out, strict, ok);
            if (!*ok)
                return;
        }
        out += QLatin1Char(']');
        return;
    }
    case 8: {
        out += QLatin1Char('{');
        bool first = true;
        for (const MGTemplateMap::Entry &e : std::get<MGTemplateMap>(m_value)) {
            if (!first)
                out += QLatin1Char(',');
            first = false;
            appendJsonString(out, e.first);
            out += QLatin1Char(':');
            e.second.appendJsonTo(out, strict, ok);
            if (!*ok)
                return;
        }
        out += QLatin1Char('}');
        return;
    }
    }
}

bool MGTemplateValue::appendJson(QString &out) const
{
    const qsizetype mark = out.size();
    bool ok = true;
    appendJsonTo(out, true, &ok);
    if (!ok)
        out.truncate(mark);
    return ok;
}

void MGTemplateValue::appendText(QString &out) const
{
    switch (m_value.index()) {
    case 0: return;
    case 1: out += std::get<QString>(m_value); return;
    case 2: out += QString::number(std::get<qint64>(m_value)); return;
    case 3: appendDouble(out, std::get<double>(m_value)); return;
    case 4: out += std::get<bool>(m_value) ? QLatin1Char('1') : QLatin1Char('0'); return;
    case 5: out += dateText(std::get<Date>(m_value)); return;
    case 6: out += colourText(std::get<Colour>(m_value)); return;
    default: {
        bool ok = true;
        appendJsonTo(out, false, &ok);
        return;
    }
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

namespace {

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
    case QJsonValue::Undefined: return MGTemplateValue();
    case QJsonValue::Bool: return boolean(json.toBool());
    case QJsonValue::String: return MGTemplateValue(json.toString());
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
                    *error = QStringLiteral("\"%1\" is not an ISO 8601 date (as 2020-01-02T03:04:05Z)").arg(text);
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
