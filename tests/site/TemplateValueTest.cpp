// Template values: copies that don't share changes, sorted maps, the text
// and JSON forms, and reading JSON.

#include "site/MGTemplateValue.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

MGTemplateValue fromJsonText(const char *json, QString *error = nullptr)
{
    const QJsonDocument doc = QJsonDocument::fromJson(QByteArray("{\"v\": ") + json + "}");
    EXPECT_TRUE(doc.isObject()) << json;
    const std::optional<MGTemplateValue> v =
        MGTemplateValue::fromJson(doc.object().value(QLatin1String("v")), error);
    return v ? *v : MGTemplateValue(QStringLiteral("<invalid>"));
}

TEST(TemplateValue, CopiesDontShareChanges)
{
    MGTemplateList list{MGTemplateValue("a"), MGTemplateMap{{QStringLiteral("k"), "v"}}};
    const MGTemplateList copy = list;
    EXPECT_TRUE(copy.sharesDataWith(list));
    list.append(MGTemplateValue("b"));
    list.mutableAt(1).mutableMap()->insert(QStringLiteral("k"), "changed");
    EXPECT_EQ(copy.size(), 2);
    EXPECT_EQ(copy.at(1).map()->find(u"k")->toText(), QStringLiteral("v"));
    EXPECT_EQ(list.at(1).map()->find(u"k")->toText(), QStringLiteral("changed"));

    MGTemplateMap map{{QStringLiteral("a"), "1"}};
    const MGTemplateMap mapCopy = map;
    map.insert(QStringLiteral("b"), "2");
    map.remove(u"a");
    EXPECT_EQ(mapCopy.size(), 1);
    EXPECT_TRUE(mapCopy.contains(u"a"));
    EXPECT_FALSE(map.contains(u"a"));
}

TEST(TemplateValue, MapKeepsKeysSorted)
{
    MGTemplateMap map;
    for (const char *key : {"m", "b", "z", "a", "b"})
        map.insert(QString::fromLatin1(key), MGTemplateValue(key));
    QStringList keys;
    for (const MGTemplateMap::Entry &e : map)
        keys.append(e.first);
    EXPECT_EQ(keys, QStringList({"a", "b", "m", "z"}));
    EXPECT_EQ(map.find(u"m")->toText(), QStringLiteral("m"));
    EXPECT_EQ(map.find(u"n"), nullptr);
    EXPECT_EQ(map.findMutable(u"n"), nullptr);
    EXPECT_FALSE(map.remove(u"n"));
    EXPECT_TRUE(map.remove(u"b"));
    EXPECT_EQ(map.size(), 3);
}

TEST(TemplateValue, TextForms)
{
    const struct {
        MGTemplateValue value;
        const char *text;
    } cases[] = {
        {MGTemplateValue(), ""},
        {MGTemplateValue::integer(-42), "-42"},
        {MGTemplateValue::integer(std::numeric_limits<qint64>::min()), "-9223372036854775808"},
        {MGTemplateValue::number(0.1), "0.1"},
        {MGTemplateValue::number(-2.5), "-2.5"},
        {MGTemplateValue::number(1e21), "1e+21"},
        {MGTemplateValue::number(std::nan("")), "nan"},
        {MGTemplateValue::boolean(true), "1"},
        {MGTemplateValue::boolean(false), "0"},
        {MGTemplateValue::Date{-1000}, "1969-12-31T23:59:59Z"},
        {MGTemplateValue::Date{1577934245123}, "2020-01-02T03:04:05.123Z"},
        {MGTemplateValue::Colour{1, 0.5, 0, 1}, "#ff7f00"},
        {MGTemplateValue::Colour{2, -1, 0, 0.5}, "#ff00007f"},
        {MGTemplateList{MGTemplateValue::Date{0}, MGTemplateValue::number(std::nan("")), MGTemplateValue()},
         R"(["1970-01-01T00:00:00Z",null,null])"},
        {MGTemplateMap{{QStringLiteral("s"), "</script>\u2028"}}, R"({"s":"<\/script>\u2028"})"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.value.toText().toStdString(), c.text);
}

TEST(TemplateValue, StrictJsonRefusesWhatJsonCantHold)
{
    const MGTemplateValue refused[] = {
        MGTemplateList{MGTemplateValue::integer(1), MGTemplateValue::Date{0}},
        MGTemplateMap{{QStringLiteral("c"), MGTemplateValue::Colour{}}},
        MGTemplateList{MGTemplateList{MGTemplateValue::number(INFINITY)}},
    };
    for (const MGTemplateValue &v : refused) {
        QString out = QStringLiteral("kept");
        EXPECT_FALSE(v.appendJson(out));
        EXPECT_EQ(out, QStringLiteral("kept"));
    }
    QString out;
    EXPECT_TRUE(MGTemplateValue(MGTemplateList{MGTemplateValue::number(0.5), MGTemplateValue::boolean(false)})
                    .appendJson(out));
    EXPECT_EQ(out, QStringLiteral("[0.5,false]"));
}

TEST(TemplateValue, ReadsJson)
{
    EXPECT_EQ(fromJsonText(R"({"$date": "2020-01-02T03:04:05Z"})"),
              MGTemplateValue(MGTemplateValue::Date{1577934245000}));
    EXPECT_EQ(fromJsonText(R"({"$color": "#ff000080"})"),
              MGTemplateValue(MGTemplateValue::Colour{1, 0, 0, 128 / 255.0}));
    EXPECT_EQ(fromJsonText("12"), MGTemplateValue::integer(12));
    EXPECT_EQ(fromJsonText("12.5"), MGTemplateValue::number(12.5));
    EXPECT_EQ(fromJsonText("null"), MGTemplateValue());
    // "$date" beside other keys is an ordinary map.
    const MGTemplateValue map = fromJsonText(R"({"$date": "x", "other": 1})");
    ASSERT_TRUE(map.isMap());
    EXPECT_EQ(map.map()->size(), 2);

    QString error;
    EXPECT_EQ(fromJsonText(R"([{"$date": "yesterday"}])", &error),
              MGTemplateValue(QStringLiteral("<invalid>")));
    EXPECT_EQ(error, QStringLiteral("\"yesterday\" is not an ISO 8601 date (as 2020-01-02T03:04:05Z)"));
    EXPECT_EQ(fromJsonText(R"({"k": {"$color": "red"}})", &error),
              MGTemplateValue(QStringLiteral("<invalid>")));
    EXPECT_EQ(error, QStringLiteral("\"red\" is not a colour (as #rrggbb or #rrggbbaa)"));
}

TEST(TemplateValue, Readings)
{
    EXPECT_TRUE(MGTemplateValue("text").hasIntegerReading());
    EXPECT_TRUE(MGTemplateValue::boolean(false).hasIntegerReading());
    EXPECT_FALSE(MGTemplateValue(MGTemplateValue::Date{}).hasIntegerReading());
    EXPECT_FALSE(MGTemplateValue(MGTemplateList{}).hasIntegerReading());
    EXPECT_FALSE(MGTemplateValue::number(0.0).numberIsNonZero());
    EXPECT_TRUE(MGTemplateValue::number(0.25).numberIsNonZero());
    EXPECT_FALSE(MGTemplateValue("1").numberIsNonZero());
}

} // namespace
