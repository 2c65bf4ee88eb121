#include "cli/CliCommand.h"
#include "site/ICUTemplateMatcher.h"
#include "site/MGTemplateEngine.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace orvo::cli;

namespace
{

// Collects the errors of a run in the order they came.
class ErrorCollector : public MGTemplateEngineDelegate
{
public:
    void templateEngineEncounteredErrorIsContinuing(MGTemplateEngine *, const MGTemplateError &error,
                                                    bool continuing) override
    {
        errors.push_back({error, continuing});
    }
    std::vector<std::pair<MGTemplateError, bool>> errors;
};

int runTemplate(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}}, 2, 2);
    if (!args)
        return Usage;
    const QString templatePath = args->positional(0);
    const QString variablesPath = args->positional(1);
    if (templatePath == QLatin1String("-") && variablesPath == QLatin1String("-"))
        return ctx.usageError(
            QStringLiteral("only one of TEMPLATE_FILE and VARIABLES.json can be standard input"));

    QString error;
    const std::optional<QByteArray> json = readInput(variablesPath, &error);
    if (!json)
        return ctx.fail(error);
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(*json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return ctx.fail(QStringLiteral("%1 is not valid JSON: %2 at offset %3")
                            .arg(variablesPath, parseError.errorString())
                            .arg(parseError.offset));
    if (!doc.isObject())
        return ctx.fail(QStringLiteral("%1 must hold a JSON object of variables").arg(variablesPath));
    const std::optional<MGTemplateValue> variables = MGTemplateValue::fromJson(doc.object(), &error);
    if (!variables)
        return ctx.fail(QStringLiteral("%1: %2").arg(variablesPath, error));

    MGTemplateEngine engine;
    engine.setMatcher(std::make_unique<ICUTemplateMatcher>(&engine));
    ErrorCollector collector;
    engine.setDelegate(&collector);
    std::optional<QString> output;
    if (templatePath == QLatin1String("-")) {
        const std::optional<QByteArray> bytes = readInput(templatePath, &error);
        if (!bytes)
            return ctx.fail(error);
        output = engine.processTemplateWithVariables(QString::fromUtf8(*bytes), *variables->map());
    } else {
        if (!QFileInfo(templatePath).isFile())
            return ctx.fail(QStringLiteral("cannot read %1: no such file").arg(templatePath));
        output = engine.processTemplateInFileAtPathWithVariables(templatePath, *variables->map());
        if (!output)
            return ctx.fail(QStringLiteral("cannot read %1").arg(templatePath));
    }

    if (args->isSet(QStringLiteral("json"))) {
        QJsonArray errors;
        for (const auto &[e, continuing] : collector.errors)
            errors.append(QJsonObject{{QStringLiteral("code"), e.code},
                                      {QStringLiteral("message"), e.description},
                                      {QStringLiteral("continuing"), continuing}});
        const QJsonObject result{{QStringLiteral("output"), output.value_or(QString())},
                                 {QStringLiteral("errors"), errors}};
        writeStdout(QJsonDocument(result).toJson(QJsonDocument::Indented));
    } else {
        writeStdout(output.value_or(QString()).toUtf8());
        for (const auto &[e, continuing] : collector.errors)
            ctx.err() << "orvo: error " << e.code << ": " << e.description << '\n';
    }
    return collector.errors.empty() ? Success : Failure;
}

} // namespace

ORVO_CLI_COMMAND({"template", "expand a site theme template against variables",
                  "orvo template TEMPLATE_FILE VARIABLES.json [--json]\n"
                  "\n"
                  "Expands a template as a site build does and prints the result. VARIABLES.json\n"
                  "holds one JSON object whose keys are the template's variables; a value written\n"
                  "{\"$date\": \"2020-01-02T03:04:05Z\"} is a date, {\"$color\": \"#rrggbb\"} a colour.\n"
                  "Either file may be - for standard input.\n"
                  "\n"
                  "Errors go to standard error as \"orvo: error CODE: message\", and the output is\n"
                  "printed all the same (up to where the run stopped, for an error that stops it).\n"
                  "The exit code is 1 when the template reported any error, as a site build would\n"
                  "then fail. --json prints {\"output\": ..., \"errors\": [{code, message,\n"
                  "continuing}]} on standard output instead.\n"
                  "\n"
                  "Codes: 0 a block began and ended at once; 1 a block ended that isn't open (stops);\n"
                  "2 unknown marker; 3 variable without value; 4 block without end markers;\n"
                  "5 invalid resume range (stops); 6 blocks left open; 7 no matcher;\n"
                  "8 a run limit reached (stops).",
                  &runTemplate});
