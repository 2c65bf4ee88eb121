// orvo settings export|import: the settings file.
#include "cli/CliSubcommand.h"
#include "core/AppDelegate.h"

#include <QFileInfo>

using namespace orvo::cli;

namespace {

QString plural(int n, const char *one, const char *many)
{
    return QStringLiteral("%1 %2").arg(n).arg(QLatin1String(n == 1 ? one : many));
}

void printWarnings(Context &ctx, const QStringList &warnings)
{
    for (const QString &w : warnings)
        ctx.err() << "orvo: warning: " << w << '\n';
}

int runExport(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 1, 1);
    if (!args)
        return Usage;
    const QString path = QFileInfo(args->positional(0)).absoluteFilePath();
    ORVSettingsFile::ExportSummary summary;
    QString error;
    if (!AppDelegate::sharedDelegate()->exportAllSettingAction(path, &error, &summary))
        return ctx.fail(error);
    printWarnings(ctx, summary.warnings);
    ctx.out() << "Exported " << plural(summary.settings, "setting", "settings") << ", "
              << plural(summary.locations, "location", "locations") << ", "
              << plural(summary.externalSources, "external folder", "external folders") << ", "
              << plural(summary.publishingItems, "publishing target", "publishing targets") << " and "
              << plural(summary.imagesUploadItems, "image host", "image hosts") << " to " << path << ".\n";
    return Success;
}

int runImport(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 1, 1);
    if (!args)
        return Usage;
    const QString path = QFileInfo(args->positional(0)).absoluteFilePath();
    if (!QFileInfo(path).isFile())
        return ctx.fail(QStringLiteral("%1 does not exist").arg(path));
    const ORVSettingsFile::ImportReport report = AppDelegate::sharedDelegate()->importAllSettingAction(path);
    if (!report.foundSomething) {
        printWarnings(ctx, report.warnings);
        return ctx.fail(QStringLiteral("found nothing to import in %1: it is not an Orvo settings file, or it was "
                                       "made with another key; nothing was changed")
                            .arg(path));
    }
    printWarnings(ctx, report.warnings);
    if (report.itemsWithoutRegistry > 0)
        ctx.err() << "orvo: warning: "
                  << plural(report.itemsWithoutRegistry, "service was", "services were")
                  << " left aside: this build keeps no publishing targets or image hosts yet\n";
    ctx.out() << "Imported " << plural(report.settings, "setting", "settings") << ", "
              << plural(report.locations, "location", "locations") << ", "
              << plural(report.externalSourcesAdded, "external folder", "external folders") << ", "
              << plural(report.publishingAdded, "publishing target", "publishing targets") << " and "
              << plural(report.imagesUploadAdded, "image host", "image hosts");
    const int skipped = report.publishingSkipped + report.imagesUploadSkipped;
    if (skipped > 0)
        ctx.out() << " (" << plural(skipped, "service", "services") << " present already)";
    ctx.out() << ".\nRestart Orvo if it is running, so that it takes in the new settings.\n";
    return Success;
}

int runSettings(Context &ctx) { return runSubcommand(ctx, {{"export", &runExport}, {"import", &runImport}}); }

} // namespace

ORVO_CLI_COMMAND({"settings", "carry all settings to another machine",
                  "orvo settings export FILE\n"
                  "orvo settings import FILE\n"
                  "\n"
                  "export writes every preference that travels (70 of them), the library, site\n"
                  "and backup locations, the external folders, and the publishing targets and\n"
                  "image hosts with their secrets from the keyring into FILE, enciphered (the\n"
                  "desktop app names such files *.orvoSettingData). Keep the file private.\n"
                  "\n"
                  "import reads such a file and applies it: preferences, locations (the main\n"
                  "library may move), external folders this machine lacks, and services not\n"
                  "configured yet (Evernote accounts sign in again on each machine). A file that\n"
                  "is not an Orvo settings file, or was made with another key, changes nothing\n"
                  "and exits 1.",
                  &runSettings});
