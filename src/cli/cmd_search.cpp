// orvo search: the library's documents, or folders, by their words.
#include "cli/CliLibraryLists.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVSearchController.h"
#include "library/supportedDocumentExt.h"

#include <QEventLoop>

using namespace orvo::cli;

namespace {

// Runs one search on the driver and waits for its final result.
QVariantMap awaitResult(ORVSearchController &search, const std::function<void()> &start)
{
    QVariantMap result;
    bool finished = false;
    QEventLoop loop;
    const auto observer = ORVNotificationCenter::defaultCenter()->addObserver(
        kORVSearchControllerDidUpdateResultNotification, &loop, [&](const ORVNotification &n) {
            if (n.sender != &search || !n.userInfo.value(QStringLiteral("isOK")).toBool())
                return;
            result = n.userInfo;
            finished = true;
            loop.quit();
        });
    start();
    if (!finished)
        loop.exec();
    ORVNotificationCenter::defaultCenter()->removeObserver(observer);
    return result;
}

int runSearch(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("folder"), true}, {QStringLiteral("json")}}, 1, -1);
    if (!args)
        return Usage;
    const QString query = args->positionals().join(QLatin1Char(' '));
    if (ORVSearchController::analyticsSearchString(query).isEmpty())
        return ctx.usageError(QStringLiteral("the query holds nothing to search for"));
    const bool json = args->isSet(QStringLiteral("json"));
    ORVSearchController search;

    if (args->isSet(QStringLiteral("folder"))) {
        QStringList folders;
        for (const QString &folder : args->values(QStringLiteral("folder"))) {
            if (!QFileInfo::exists(folder))
                return ctx.fail(QStringLiteral("%1 does not exist").arg(folder));
            folders << QFileInfo(folder).absoluteFilePath();
        }
        const QVariantMap result = awaitResult(search, [&] {
            search.queryWithExternalURLs(folders, query, supportedDocumentExt());
        });
        const auto hits = result.value(QStringLiteral("data")).value<ORVSearchExternalHits>();
        if (json) {
            QJsonArray list;
            for (const ORVExternalListDataItem::Ptr &hit : hits) {
                QJsonObject o = hit->toJson();
                o.insert(QStringLiteral("snippet"), o.take(QStringLiteral("content")));
                list.append(o);
            }
            printJson(ctx, list);
        } else {
            for (const ORVExternalListDataItem::Ptr &hit : hits)
                ctx.out() << hit->realPath << '\n';
        }
        return Success;
    }

    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    const QVariantMap result =
        awaitResult(search, [&] { search.queryWithLibraryURL(lib->path, lib->manager, query); });
    const auto rows = result.value(QStringLiteral("data")).value<QList<ORVLibraryListDataItem>>();
    if (json) {
        QJsonArray list;
        for (qsizetype i = 0; i < rows.size(); ++i) {
            QJsonObject o = rowJson(rows.at(i), i, false);
            o.insert(QStringLiteral("snippet"), rows.at(i).content);
            list.append(o);
        }
        printJson(ctx, list);
    } else {
        printRows(ctx, rows, true);
    }
    return Success;
}

} // namespace

ORVO_CLI_COMMAND({"search", "find library documents, or files in folders, by their words",
                  "orvo [--library DIR] search [--json] QUERY...\n"
                  "orvo search --folder DIR [--folder DIR]... [--json] QUERY...\n"
                  "\n"
                  "Reads every document of the library (the trash too) and lists those\n"
                  "that hold every word of the query, ignoring case, newest change first,\n"
                  "each with a snippet around the words found. Several words must also\n"
                  "stand together, in that order, separated by one space.\n"
                  "\n"
                  "The query can narrow the search:\n"
                  "  -t a,b   the document's tags hold \"a\" and \"b\"\n"
                  "  -c name  its categories hold \"name\"\n"
                  "  -h word  its title holds \"word\"\n"
                  "Words after a switch's value that follow the first run of words are\n"
                  "ignored. A query of switches alone lists every document that passes\n"
                  "them, with its summary.\n"
                  "\n"
                  "With --folder the files in the folders (and their subfolders) with a\n"
                  "document extension (md, markdown, txt, text, mdown, mkd, rmd, mkdn,\n"
                  "mdwn, mdtxt, mdtext, taskpaper, fountain, rst) are searched instead; -h\n"
                  "then looks at the file name. It prints the files found.\n"
                  "\n"
                  "With --json each library result has the fields of 'orvo doc list --json'\n"
                  "and snippet; each file result realPath, fileName, title (the file\n"
                  "name without extension), snippet, creationDate, modificationDate\n"
                  "and fileSize.",
                  &runSearch});
