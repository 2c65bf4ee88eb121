#include "TemplateTestSupport.h"

#include "site/ICUTemplateMatcher.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>
#include <unicode/ucal.h>
#include <unicode/uloc.h>

namespace sitetest
{

namespace
{

class TestMarkers : public MGTemplateMarker
{
public:
    explicit TestMarkers(MGTemplateEngine *engine) : m_engine(engine) {}
    QStringList markers() const override
    {
        return {QStringLiteral("both"), QStringLiteral("noend"), QStringLiteral("jump"),
                QStringLiteral("shout"), QStringLiteral("for")};
    }
    QStringList endMarkersForMarker(const QString &) const override { return {}; }
    MGTemplateValue markerEncountered(MGTemplateMarkerCall &call) override
    {
        if (call.marker == u"both")
            call.blockStarted = call.blockEnded = true;
        else if (call.marker == u"noend")
            call.blockStarted = true;
        else if (call.marker == u"jump")
            call.nextRange = {m_engine->templateContents().size() + 5, 0};
        else if (call.marker == u"shout")
            return MGTemplateValue("HEY");
        else if (call.marker == u"for")
            return MGTemplateValue("HIJACKED");
        return {};
    }
    void engineFinishedProcessingTemplate() override {}

private:
    MGTemplateEngine *m_engine;
};

class TestFilters : public MGTemplateFilter
{
public:
    explicit TestFilters(QString name = QStringLiteral("reverse")) : m_name(std::move(name)) {}
    QStringList filters() const override { return {m_name}; }
    MGTemplateValue filterInvokedWithArgumentsOnValue(const QString &, const QStringList &,
                                                      const MGTemplateValue &value) override
    {
        QString text = value.toText();
        if (m_name == u"twice")
            return text + text;
        std::reverse(text.begin(), text.end());
        return text;
    }

private:
    QString m_name;
};

} // namespace

const MGTemplatePluginRegistry &testRegistry()
{
    static MGTemplatePluginRegistry *registry = [] {
        auto *r = new MGTemplatePluginRegistry;
        r->registerMarkerClass(QStringLiteral("TestMarkers"),
                               [](MGTemplateEngine *e) { return std::make_shared<TestMarkers>(e); });
        r->registerFilterClass(QStringLiteral("TestFilters"), [] { return std::make_shared<TestFilters>(); });
        // Offers both: load takes the filter.
        r->registerMarkerClass(QStringLiteral("TestBoth"),
                               [](MGTemplateEngine *e) { return std::make_shared<TestMarkers>(e); });
        r->registerFilterClass(QStringLiteral("TestBoth"),
                               [] { return std::make_shared<TestFilters>(QStringLiteral("twice")); });
        return r;
    }();
    return *registry;
}

namespace
{

// Dates format in UTC with the en_US locale in every test of the binary.
class IcuDefaults : public ::testing::Environment
{
public:
    void SetUp() override
    {
        UErrorCode status = U_ZERO_ERROR;
        ucal_setDefaultTimeZone(u"UTC", &status);
        uloc_setDefault("en_US", &status);
        ASSERT_TRUE(U_SUCCESS(status));
    }
};
[[maybe_unused]] ::testing::Environment *const icuDefaults =
    ::testing::AddGlobalTestEnvironment(new IcuDefaults);

} // namespace

void RecordingDelegate::templateEngineBlockStarted(MGTemplateEngine *, const MGTemplateBlock &block)
{
    events.append(QLatin1Char('+') + block.name);
}

void RecordingDelegate::templateEngineBlockEnded(MGTemplateEngine *, const MGTemplateBlock &block)
{
    events.append(QLatin1Char('-') + block.name);
}

void RecordingDelegate::templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *,
                                                                   const MGTemplateError &error,
                                                                   bool isContinuing)
{
    codes.push_back(error.code);
    errors.push_back(error);
    continuing.push_back(isContinuing);
}

MGTemplateMap variablesFromJson(const char *json)
{
    if (!json || !*json)
        return {};
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(QByteArray(json), &parseError);
    EXPECT_EQ(parseError.error, QJsonParseError::NoError) << json;
    QString error;
    const std::optional<MGTemplateValue> value = MGTemplateValue::fromJson(doc.object(), &error);
    EXPECT_TRUE(value && value->map()) << qPrintable(error);
    return value && value->map() ? *value->map() : MGTemplateMap();
}

std::unique_ptr<MGTemplateEngine> makeEngine()
{
    auto engine = MGTemplateEngine::templateEngine();
    engine->setMatcher(std::make_unique<ICUTemplateMatcher>(engine.get()));
    return engine;
}

Outcome expand(MGTemplateEngine &engine, const QString &text, const MGTemplateMap &variables)
{
    RecordingDelegate delegate;
    engine.setDelegate(&delegate);
    const std::optional<QString> output = engine.processTemplateWithVariables(text, variables);
    engine.setDelegate(nullptr);
    return {output.value_or(QStringLiteral("<nothing>")), delegate.codes};
}

} // namespace sitetest
