// `orvo template TEMPLATE_FILE VARIABLES.json`: what a theme author sees.

#include "support/TestEnv.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <cstdlib>

using namespace orvotest;

namespace
{

class TemplateCommand : public ::testing::Test
{
protected:
    void SetUp() override
    {
        setenv("TZ", "UTC", 1); // the child formats dates in the system's zone
        m_dir = tempHome() + QStringLiteral("/template-cli");
        QDir().mkpath(m_dir);
    }

    QString file(const char *name, const QByteArray &bytes)
    {
        const QString path = m_dir + QLatin1Char('/') + QLatin1String(name);
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }

    struct Result {
        int code;
        QByteArray out;
        QByteArray err;
    };
    Result run(const QStringList &args, const QByteArray &stdinBytes = {})
    {
        Result r;
        r.code = runOrvo(QStringList{QStringLiteral("template")} + args, &r.out, &r.err, stdinBytes);
        return r;
    }

    QString m_dir;
};

TEST_F(TemplateCommand, ExpandsAgainstJsonVariables)
{
    const Result r =
        run({file("page.html", "<h1>{{ title | uppercase }}</h1>{% for p in posts %}<a href=\"{{ p.url }}\">"
                               "{{ p.title }}</a>{% /for %} {{ when | date_format: \"yyyy-MM-dd HH:mm\" }}"
                               " {{ accent | color_format: hex }}"),
             file("vars.json", R"({"title": "Notes", "posts": [{"title": "One", "url": "1.html"}],
                                                "when": {"$date": "2020-01-02T03:04:05Z"},
                                                "accent": {"$color": "#336699"}})")});
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.toStdString(), "<h1>NOTES</h1><a href=\"1.html\">One</a> 2020-01-02 03:04 336699");
    EXPECT_TRUE(r.err.isEmpty());
}

TEST_F(TemplateCommand, ReportsErrorsWithCodesAndPrintsTheOutput)
{
    const Result r =
        run({file("errors.html", "a{{ missing }}b{% nosuch %}c{% /if %}d"), file("vars.json", "{}")});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.out.toStdString(), "abc");
    EXPECT_EQ(r.err.toStdString(),
              "orvo: error 3: \"missing\" is not a valid variable\n"
              "orvo: error 2: \"nosuch\" is not a valid marker\n"
              "orvo: error 1: Marker \"/if\" reported that a non-existent block ended\n");
}

TEST_F(TemplateCommand, JsonReport)
{
    const Result r = run({file("t.html", "x{{ y }}"), file("vars.json", "{}"), QStringLiteral("--json")});
    EXPECT_EQ(r.code, 1);
    const QJsonObject report = QJsonDocument::fromJson(r.out).object();
    EXPECT_EQ(report.value(QLatin1String("output")).toString(), QStringLiteral("x"));
    const QJsonArray errors = report.value(QLatin1String("errors")).toArray();
    ASSERT_EQ(errors.size(), 1);
    EXPECT_EQ(errors[0].toObject().value(QLatin1String("code")).toInt(), 3);
    EXPECT_EQ(errors[0].toObject().value(QLatin1String("message")).toString(),
              QStringLiteral("\"y\" is not a valid variable"));
    EXPECT_TRUE(errors[0].toObject().value(QLatin1String("continuing")).toBool());
}

TEST_F(TemplateCommand, VariablesFromStandardInput)
{
    const Result r = run({file("t.html", "{{ n }}"), QStringLiteral("-")}, R"({"n": 7})");
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, QByteArray("7"));
}

TEST_F(TemplateCommand, RefusesBadInput)
{
    const QString t = file("t.html", "{{ x }}");
    const struct {
        QStringList args;
        int code;
        const char *message;
    } cases[] = {
        {{t, file("broken.json", "{\"x\": ")}, 1, "is not valid JSON"},
        {{t, file("list.json", "[1, 2]")}, 1, "must hold a JSON object of variables"},
        {{t, file("date.json", R"({"x": {"$date": "soon"}})")}, 1, "\"soon\" is not an ISO 8601 date"},
        {{m_dir + QStringLiteral("/none.html"), file("ok.json", "{}")}, 1, "cannot read"},
        {{t}, 2, "usage"},
        {{QStringLiteral("-"), QStringLiteral("-")}, 2, "only one of"},
    };
    for (const auto &c : cases) {
        const Result r = run(c.args);
        EXPECT_EQ(r.code, c.code) << c.message;
        EXPECT_TRUE(r.out.isEmpty()) << c.message;
        EXPECT_TRUE(r.err.contains(c.message)) << r.err.toStdString();
    }
}

} // namespace
