// orvo trash: the library's trash.
#include "cli/CliLibraryLists.h"
#include "cli/CliSubcommand.h"

using namespace orvo::cli;

namespace {

int runEmpty(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}}, 0, 0, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    const qsizetype inTrash = o->list->allTrashArticles().size();
    const QList<qint64> deleted = o->list->emptyTrashAction();
    if (args->isSet(QStringLiteral("json"))) {
        QJsonArray ids;
        for (qint64 id : deleted)
            ids.append(id);
        printJson(ctx, QJsonObject{{QStringLiteral("deleted"), ids}});
    } else {
        ctx.out() << "Deleted " << deleted.size() << (deleted.size() == 1 ? " document" : " documents") << '\n';
    }
    if (deleted.size() != inTrash)
        return ctx.fail(QStringLiteral("%1 documents stayed in the trash: the system's trash did not take their files")
                            .arg(inTrash - deleted.size()));
    return Success;
}

int runTrash(Context &ctx) { return runSubcommand(ctx, {{"empty", &runEmpty}}); }

} // namespace

ORVO_CLI_COMMAND({"trash", "empty the library's trash",
                  "orvo [--library DIR] trash empty [--json]\n"
                  "\n"
                  "empty deletes every document in the library's trash for good: their\n"
                  "files and media folders go to the system's trash (the last way back),\n"
                  "their rows leave the library. 'orvo doc list trash' shows what is there.",
                  &runTrash});
