// The engine as its client sees it: the error reports, the delegate's events,
// what lasts from one run to the next, variable access, files and the run
// limits.

#include "TemplateTestSupport.h"

#include "site/ICUTemplateMatcher.h"
#include "site/MGTemplateStandardFilters.h"
#include "site/MGTemplateStandardMarkers.h"

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <unicode/ucal.h>

#include <cmath>

using namespace sitetest;

namespace
{

const char *const kItems = R"({"items": [1, 2], "name": "Ann"})";

struct Report {
    std::vector<MGTemplateError> errors;
    std::vector<bool> continuing;
    QStringList events;
    int finished = 0;
    std::optional<QString> output;
};

Report run(MGTemplateEngine &engine, const QString &text, const MGTemplateMap &variables = {})
{
    RecordingDelegate delegate;
    engine.setDelegate(&delegate);
    Report r;
    r.output = engine.processTemplateWithVariables(text, variables);
    engine.setDelegate(nullptr);
    r.errors = delegate.errors;
    r.continuing = delegate.continuing;
    r.events = delegate.events;
    r.finished = delegate.finished;
    return r;
}

TEST(TemplateEngineErrors, MessagesAndContinuation)
{
    const struct {
        const char *text;
        int code;
        const char *message;
        bool continuing;
    } cases[] = {
        {"{% load TestMarkers %}{% both %}", 0,
         R"(Marker "both" reported that a block simultaneously began and ended)", true},
        {"{% /for %}", 1, R"(Marker "/for" reported that a non-existent block ended)", true},
        {"{% if yes %}{% /for %}", 1,
         R"(Marker "/for" reported that a block ended, but current block was started by "if" marker)", true},
        {"{% nosuch a b %}", 2, R"("nosuch" is not a valid marker)", true},
        {"{{ nothing.at.all }}", 3, R"("nothing.at.all" is not a valid variable)", true},
        {"{{ }}", 3, R"("" is not a valid variable)", true},
        {"{% load TestMarkers %}{% noend %}", 4,
         R"(Marker "noend" started a block but did not supply any suitable end-markers)", true},
        {"{% load TestMarkers %}{% jump %}", 5,
         R"(Fatal Error: Marker handler "jump" specified an invalid range to resume processing from)", false},
        {"{% if yes %}", 6, "Finished processing template, but 1 block was left open (if).", true},
        {"{% if yes %}{% for x in items %}{% section s %}", 6,
         "Finished processing template, but 3 blocks were left open (if, for, section).", true},
    };
    for (const auto &c : cases) {
        auto engine = makeEngine();
        engine->setPluginRegistry(&testRegistry());
        const Report r = run(*engine, QString::fromUtf8(c.text), variablesFromJson(kItems));
        ASSERT_EQ(r.errors.size(), 1u) << c.text;
        EXPECT_EQ(r.errors[0].domain, QStringLiteral("MGTemplateEngineErrorDomain"));
        EXPECT_EQ(r.errors[0].code, c.code) << c.text;
        EXPECT_EQ(r.errors[0].description.toStdString(), c.message) << c.text;
        EXPECT_EQ(r.continuing[0], c.continuing) << c.text;
        EXPECT_EQ(r.finished, 1) << c.text;
    }
}

TEST(TemplateEngineErrors, NoMatcherProducesNothing)
{
    MGTemplateEngine engine;
    const Report r = run(engine, QStringLiteral("text"));
    EXPECT_FALSE(r.output.has_value());
    ASSERT_EQ(r.errors.size(), 1u);
    EXPECT_EQ(r.errors[0].code, MGTemplateEngineErrorNoMatcher);
    EXPECT_EQ(r.errors[0].description,
              QStringLiteral("Fatal Error: No matcher has been configured for the template engine"));
    EXPECT_FALSE(r.continuing[0]);
    EXPECT_EQ(r.finished, 0);
}

TEST(TemplateEngineErrors, NoDelegateNeeded)
{
    auto engine = makeEngine();
    EXPECT_EQ(engine->processTemplateWithVariables(QStringLiteral("a{{ x }}{% nosuch %}{% /if %}b"), {}),
              QStringLiteral("a"));
}

TEST(TemplateEngineDelegate, BlockEventsInOrder)
{
    auto engine = makeEngine();
    const Report r = run(*engine, QStringLiteral("{% for x in items %}{% if yes %}{% /if %}{% /for %}"),
                         variablesFromJson(kItems));
    EXPECT_EQ(r.events, QStringList({"+for", "+if", "-if", "+if", "-if", "-for"}));
    EXPECT_TRUE(r.errors.empty());
    EXPECT_EQ(r.finished, 1);
}

TEST(TemplateEngineDelegate, BlockRecordHoldsArgumentsAndEndNames)
{
    struct Recorder : MGTemplateEngineDelegate {
        void templateEngineBlockStarted(MGTemplateEngine *, const MGTemplateBlock &block) override
        {
            blocks.push_back(block);
        }
        std::vector<MGTemplateBlock> blocks;
    } recorder;
    auto engine = makeEngine();
    engine->setDelegate(&recorder);
    engine->processTemplateWithVariables(QStringLiteral("ab{% if a == b %}{% /if %}"), {});
    ASSERT_EQ(recorder.blocks.size(), 1u);
    EXPECT_EQ(recorder.blocks[0].name, QStringLiteral("if"));
    EXPECT_EQ(recorder.blocks[0].args, QStringList({"a", "==", "b"}));
    EXPECT_EQ(recorder.blocks[0].endNames, QStringList({"/if", "else"}));
    EXPECT_EQ(recorder.blocks[0].startMarkerRange, (MGTemplateRange{2, 15}));
}

TEST(TemplateEngineState, GlobalsLastAndTruthNamesAreReset)
{
    auto engine = makeEngine();
    engine->setObjectForKey(MGTemplateValue("Orvo"), QStringLiteral("site"));
    engine->addEntriesFromDictionary({{QStringLiteral("year"), MGTemplateValue::integer(2024)}});
    EXPECT_EQ(engine->objectForKey(u"site"), MGTemplateValue("Orvo"));
    EXPECT_EQ(expand(*engine, QStringLiteral("{{ site }} {{ year }}")).output, QStringLiteral("Orvo 2024"));
    // A run's variable comes before a global of the same name.
    EXPECT_EQ(expand(*engine, QStringLiteral("{{ site }}"), {{QStringLiteral("site"), "Mine"}}).output,
              QStringLiteral("Mine"));
    // Assigning to a global changes it for later runs...
    EXPECT_EQ(expand(*engine, QStringLiteral("{% set site Other %}{% set YES changed %}{{ YES }}")).output,
              QStringLiteral("changed"));
    EXPECT_EQ(expand(*engine, QStringLiteral("{{ site }}")).output, QStringLiteral("Other"));
    // ... except the truth names, which each run sets afresh.
    EXPECT_EQ(expand(*engine, QStringLiteral("{{ YES }}")).output, QStringLiteral("1"));
}

TEST(TemplateEngineState, CyclesStartOverEachRun)
{
    auto engine = makeEngine();
    const QString text = QStringLiteral("{% for x in items %}{% cycle a b %}{% /for %}|{% cycle x y %}");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(expand(*engine, text, variablesFromJson(kItems)).output, QStringLiteral("ab|x"));
}

TEST(TemplateEngineState, LoadedPluginsLast)
{
    auto engine = makeEngine();
    engine->setPluginRegistry(&testRegistry());
    expand(*engine, QStringLiteral("{% load TestFilters %}"));
    EXPECT_EQ(expand(*engine, QStringLiteral("{{ name | reverse }}"), variablesFromJson(kItems)).output,
              QStringLiteral("nnA"));
}

TEST(TemplateEngineState, StopsLeaveNoStateBehind)
{
    // A run that stops inside blocks must not leave frames for the next run.
    auto engine = makeEngine();
    EXPECT_EQ(
        expand(*engine, QStringLiteral("{% if no %}{% for x in items %}{% /if %}"), variablesFromJson(kItems))
            .codes,
        std::vector<int>{1});
    const Outcome next = expand(*engine, QStringLiteral("{% if yes %}A{% else %}B{% /if %}"));
    EXPECT_EQ(next.output, QStringLiteral("A"));
    EXPECT_TRUE(next.codes.empty());
}

TEST(TemplateEngineVariables, CallersDataIsNeverChanged)
{
    auto engine = makeEngine();
    const MGTemplateMap variables = variablesFromJson(R"({"post": {"title": "a"}, "l": [1, 2]})");
    const MGTemplateMap before = variables;
    EXPECT_EQ(expand(*engine, QStringLiteral("{% set post.title b %}{% set l.0 9 %}{{ post.title }}{{ l }}"),
                     variables)
                  .output,
              QStringLiteral(R"(b["9",2])"));
    EXPECT_EQ(variables, before);
    EXPECT_EQ(engine->templateVariables().find(u"post")->map()->find(u"title")->toText(),
              QStringLiteral("b"));
}

TEST(TemplateEngineVariables, ResolvingAndParents)
{
    auto engine = makeEngine();
    engine->setObjectForKey(MGTemplateValue("global"), QStringLiteral("g"));
    engine->processTemplateWithVariables(QString(), variablesFromJson(R"({"post": {"tags": ["x", "y"]}})"));

    MGTemplateValue parent;
    QString key;
    EXPECT_EQ(engine->valueForVariableParentParentKey(u"post.tags.1", &parent, &key), MGTemplateValue("y"));
    EXPECT_EQ(parent.toText(), QStringLiteral(R"(["x","y"])"));
    EXPECT_EQ(key, QStringLiteral("1"));
    EXPECT_EQ(engine->valueForVariableParentParentKey(u"g", &parent, &key), MGTemplateValue("global"));
    EXPECT_TRUE(parent.map() && parent.map()->contains(u"g")); // the globals
    EXPECT_EQ(key, QStringLiteral("g"));
    EXPECT_TRUE(engine->resolveVariable(u"post.none").isNull());
    EXPECT_TRUE(engine->resolveVariable(u"").isNull());

    // Assignment: a new name goes into the run's variables (no block is
    // open), an existing one where it lives.
    engine->setValueForVariableForceCurrentStackFrame(MGTemplateValue("new"), QStringLiteral("fresh"), false);
    engine->setValueForVariableForceCurrentStackFrame(MGTemplateValue("z"), QStringLiteral("post.tags.0"),
                                                      false);
    engine->setValueForVariableForceCurrentStackFrame(MGTemplateValue("no"), QStringLiteral("post.tags.7"),
                                                      false);
    EXPECT_EQ(engine->resolveVariable(u"fresh"), MGTemplateValue("new"));
    EXPECT_EQ(engine->resolveVariable(u"post.tags").toText(), QStringLiteral(R"(["z","y"])"));
}

TEST(TemplateEngineMarkers, LoadingATakenNameKeepsItsHandler)
{
    auto engine = makeEngine();
    engine->loadMarker(testRegistry().makeMarker(QStringLiteral("TestMarkers"), engine.get()));
    EXPECT_EQ(expand(*engine, QStringLiteral("{% for 1 to 2 %}x{% /for %}{% shout %}")).output,
              QStringLiteral("xxHEY"));
}

TEST(TemplateEngineMarkers, NowIsThePresent)
{
    auto engine = makeEngine();
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const QString plain = expand(*engine, QStringLiteral("{% now %}")).output;
    const QDateTime printed = QDateTime::fromString(plain, Qt::ISODateWithMs);
    ASSERT_TRUE(printed.isValid()) << plain.toStdString();
    EXPECT_TRUE(plain.endsWith(u'Z'));
    EXPECT_LE(std::abs(printed.toSecsSinceEpoch() - before), 5);
    EXPECT_EQ(expand(*engine, QStringLiteral(R"({% now | date_format: "yyyy" %})")).output,
              QString::number(QDateTime::currentDateTimeUtc().date().year()));
}

TEST(TemplateEngineFilters, DatesUseTheDefaultTimeZone)
{
    UErrorCode status = U_ZERO_ERROR;
    ucal_setDefaultTimeZone(u"Asia/Tokyo", &status);
    auto engine = makeEngine();
    const Outcome o = expand(*engine, QStringLiteral(R"({{ d | date_format: "yyyy-MM-dd HH:mm" }})"),
                             variablesFromJson(R"({"d": {"$date": "2020-01-02T20:04:05Z"}})"));
    ucal_setDefaultTimeZone(u"UTC", &status);
    EXPECT_EQ(o.output, QStringLiteral("2020-01-03 05:04"));
}

TEST(TemplateEngineFilters, ColourOutsideRgbIsBlack)
{
    MGTemplateStandardFilters filters;
    const QStringList hex{QStringLiteral("hex")};
    EXPECT_EQ(filters.filterInvokedWithArgumentsOnValue(QStringLiteral("color_format"), hex,
                                                        MGTemplateValue::Colour{0.5, 1, 0, 1}),
              MGTemplateValue("7fff00"));
    for (const double bad : {1.5, -0.1, std::nan("")}) {
        EXPECT_EQ(filters.filterInvokedWithArgumentsOnValue(QStringLiteral("color_format"), hex,
                                                            MGTemplateValue::Colour{bad, 0, 0, 1}),
                  MGTemplateValue("000000"));
    }
}

TEST(TemplateEngineFiles, ReadInTheirEncoding)
{
    QTemporaryDir dir;
    const QString text = QStringLiteral("café {{ x }}");
    const struct {
        const char *name;
        QByteArray bytes;
    } files[] = {
        {"utf8.html", text.toUtf8()},
        {"utf8-bom.html", QByteArray("\xEF\xBB\xBF") + text.toUtf8()},
        {"utf16le-bom.html", QByteArray("\xFF\xFE", 2) +
                                 QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2)},
        {"latin1.html", text.toLatin1()},
    };
    auto engine = makeEngine();
    for (const auto &f : files) {
        const QString path = dir.filePath(QString::fromLatin1(f.name));
        QFile out(path);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(f.bytes);
        out.close();
        EXPECT_EQ(engine->processTemplateInFileAtPathWithVariables(path, {{QStringLiteral("x"), "1"}}),
                  QStringLiteral("café 1"))
            << f.name;
    }
    EXPECT_FALSE(engine->processTemplateInFileAtPathWithVariables(dir.filePath(QStringLiteral("none")), {}));
}

TEST(TemplateEngineLimits, RunsStopAtTheirLimits)
{
    const struct {
        MGTemplateEngine::RunLimits limits;
        const char *text;
        const char *message;
        qsizetype maxOutput;
    } cases[] = {
        {{100, 1 << 20, 100},
         "{% for 1 to 1000000 %}x{% /for %}",
         "Fatal Error: Template processing stopped after 100 markers and expressions",
         100},
        {{1000, 50, 100},
         "{% for 1 to 1000 %}0123456789{% /for %}",
         "Fatal Error: Template processing stopped: the output grew beyond 50 characters",
         60},
        {{1000, 1 << 20, 3},
         "{% if yes %}{% if yes %}{% if yes %}{% if yes %}deep{% /if %}{% /if %}{% /if %}{% /if %}",
         "Fatal Error: Template processing stopped: more than 3 blocks were open at once",
         0},
    };
    for (const auto &c : cases) {
        auto engine = makeEngine();
        engine->setRunLimits(c.limits);
        const Report r = run(*engine, QString::fromUtf8(c.text));
        ASSERT_EQ(r.errors.size(), 1u) << c.text;
        EXPECT_EQ(r.errors[0].code, MGTemplateEngineErrorRunLimitReached);
        EXPECT_EQ(r.errors[0].description.toStdString(), c.message);
        EXPECT_FALSE(r.continuing[0]);
        ASSERT_TRUE(r.output);
        EXPECT_LE(r.output->size(), c.maxOutput);
        EXPECT_EQ(r.finished, 1);
    }
}

TEST(TemplateEngine, Version)
{
    EXPECT_EQ(MGTemplateEngine::engineVersion(), QStringLiteral("1.0.1"));
}

} // namespace
