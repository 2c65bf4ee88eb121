#include "TemplateTestSupport.h"

#include "site/ICUTemplateMatcher.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace sitetest {

void RecordingDelegate::templateEngineBlockStarted(MGTemplateEngine *, const MGTemplateBlock &block)
{
    events.append(QLatin1Char('+') + block.name);
}

void RecordingDelegate::templateEngineBlockEnded(MGTemplateEngine *, const MGTemplateBlock &block)
{
    events.append(QLatin1Char('-') + block.name);
}

void RecordingDelegate::templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error,
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
