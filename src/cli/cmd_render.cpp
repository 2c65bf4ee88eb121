#include "cli/CliCommand.h"
#include "core/MyPreferences.h"
#include "markdown/MarkdownWrap.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace orvo::cli;

namespace {

// A switch given as --name or --no-name; the preference when neither.
std::optional<bool> pairedSwitch(Context &ctx, const Args &args, const QString &name, bool fallback)
{
    const bool on = args.isSet(name);
    const bool off = args.isSet(QStringLiteral("no-") + name);
    if (on && off) {
        ctx.usageError(QStringLiteral("--%1 and --no-%1 contradict each other").arg(name));
        return std::nullopt;
    }
    return on ? true : off ? false : fallback;
}

int runRender(Context &ctx)
{
    std::vector<Option> options = {{QStringLiteral("type"), true}, {QStringLiteral("info")},
                                   {QStringLiteral("toc-only")}};
    for (const char *name : {"toc", "smartypants", "newline-br", "math"}) {
        options.push_back({QString::fromLatin1(name)});
        options.push_back({QStringLiteral("no-") + QString::fromLatin1(name)});
    }
    const auto args = ctx.parse(options, 0, 1);
    if (!args)
        return Usage;

    MyPreferences *prefs = MyPreferences::sharedInstance();
    MarkdownWrap::Options o;
    bool ok = true;
    o.renderType = args->value(QStringLiteral("type"), QStringLiteral("0")).toInt(&ok);
    if (!ok || o.renderType < ORVRenderTypePlain || o.renderType > ORVRenderTypeMathImage)
        return ctx.usageError(QStringLiteral("--type takes a render type from 0 to 7"));
    const auto toc = pairedSwitch(ctx, *args, QStringLiteral("toc"), prefs->isRenderTOC());
    const auto smartypants = pairedSwitch(ctx, *args, QStringLiteral("smartypants"), prefs->isSmartypants());
    const auto newlineBR = pairedSwitch(ctx, *args, QStringLiteral("newline-br"), prefs->isTranslateNewlineToBRtags());
    const auto math = pairedSwitch(ctx, *args, QStringLiteral("math"), prefs->isEnableMath());
    if (!toc || !smartypants || !newlineBR || !math)
        return Usage;

    QString error;
    const auto input = readInput(args->positional(0), &error);
    if (!input)
        return ctx.fail(error);
    const QString markdown = QString::fromUtf8(*input);

    if (args->isSet(QStringLiteral("toc-only"))) {
        writeStdout(MarkdownWrap::markdownToHtmlTOC(markdown).toUtf8());
        return Success;
    }

    ORVMarkdownToHTMLInfo info;
    o.toc = o.replaceTOC = *toc;
    o.smartypants = *smartypants;
    o.newlineToBR = *newlineBR;
    o.isMath = *math;
    o.info = &info;
    writeStdout(MarkdownWrap::markdownToHtml(markdown, o).toUtf8());
    if (args->isSet(QStringLiteral("info"))) {
        const QJsonObject flags{{QStringLiteral("isChartOldFlowSeq"), info.isChartOldFlowSeq},
                                {QStringLiteral("isChartMermaid"), info.isChartMermaid},
                                {QStringLiteral("isChartPlantUML"), info.isChartPlantUML},
                                {QStringLiteral("isChartECharts"), info.isChartECharts},
                                {QStringLiteral("isChartVIZ"), info.isChartVIZ},
                                {QStringLiteral("isHaveLaTeX"), info.isHaveLaTeX},
                                {QStringLiteral("isHaveCodeBlock"), info.isHaveCodeBlock}};
        ctx.err() << QJsonDocument(flags).toJson(QJsonDocument::Compact) << '\n';
        ctx.err().flush();
    }
    return Success;
}

} // namespace

ORVO_CLI_COMMAND({"render", "render Markdown to an HTML fragment",
                  "orvo render [FILE|-] [--type N] [--toc|--no-toc] [--smartypants|--no-smartypants]\n"
                  "            [--newline-br|--no-newline-br] [--math|--no-math] [--info]\n"
                  "orvo render [FILE|-] --toc-only\n"
                  "\n"
                  "Renders FILE (standard input when absent or \"-\") as the preview does and prints\n"
                  "the HTML fragment. The switches override the preferences isRenderTOC,\n"
                  "isSmartypants, isTranslateNewlineToBRtags and isEnableMath for this run.\n"
                  "--type picks the render type: 0 plain, 1 Evernote, 2 PDF, 3 LaTeX tag,\n"
                  "4 table only, 5 ePub, 6 figure, 7 math image.\n"
                  "--info also prints on standard error, as one line of JSON, what the text held:\n"
                  "isChartOldFlowSeq, isChartMermaid, isChartPlantUML, isChartECharts, isChartVIZ,\n"
                  "isHaveLaTeX and isHaveCodeBlock.\n"
                  "--toc-only prints the table of contents alone, with every extension on.",
                  &runRender});
