// orvo doc new|list: library documents. Each subcommand is a function and a
// row of the table in runDoc (and a usage line in the help below).
#include "cli/CliLibrary.h"
#include "cli/CliSubcommand.h"
#include "library/document_title.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

#include <algorithm>

using namespace orvo::cli;

namespace {

QString isoDate(qint64 seconds) { return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate); }

int runNew(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("cat"), true}, {QStringLiteral("title"), true}, {QStringLiteral("json")}},
                                0, 0, 1);
    if (!args)
        return Usage;
    std::optional<qint64> catUUID;
    if (args->isSet(QStringLiteral("cat"))) {
        bool ok = false;
        catUUID = args->value(QStringLiteral("cat")).toLongLong(&ok);
        if (!ok)
            return ctx.usageError(QStringLiteral("--cat takes a category id (see 'orvo library info')"));
    }
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    ORVDBManager &m = *lib->manager;
    // Everything is checked before anything is written.
    if (catUUID && !m.itemDBCatWithUUID(*catUUID))
        return ctx.fail(QStringLiteral("the library %1 has no category %2 (see 'orvo library info')").arg(lib->path).arg(*catUUID));
    const QString docs = ORVLibraryFolder::libraryModeDocsURLByLibURL(lib->path);
    if (docs.isEmpty())
        return ctx.fail(QStringLiteral("the docs folder of %1 cannot be made").arg(lib->path));

    // A title is one line: line breaks in it become spaces.
    QString title = args->value(QStringLiteral("title"));
    title.replace(QRegularExpression(QStringLiteral("[\\r\\n\\x{2029}]+")), QStringLiteral(" "));
    const ORVDBArticle art = ORVDBArticle::newDocumentArticle();
    const QString path = ORVLibraryFolder::documentPath(lib->path, art.uuid());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return ctx.fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    file.write(title.isEmpty() ? QByteArray("# ") : QStringLiteral("# %1\n").arg(title).toUtf8());
    if (!file.commit())
        return ctx.fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    if (!m.insertItemDBArticle(art))
        // The file stays: the next list registers it as uncategorized.
        return ctx.fail(QStringLiteral("%1 was written but could not be added to the library: %2")
                            .arg(path, m.db().lastErrorMessage()));
    if (catUUID && !m.updateDBArticleWithCatIIDS(art, {*catUUID}))
        return ctx.fail(QStringLiteral("document %1 was made but could not be put in category %2").arg(art.uuid()).arg(*catUUID));

    if (args->isSet(QStringLiteral("json")))
        ctx.out() << QJsonDocument(QJsonObject{{QStringLiteral("uuid"), art.uuid()},
                                               {QStringLiteral("title"), title},
                                               {QStringLiteral("path"), path}})
                         .toJson(QJsonDocument::Compact)
                  << '\n';
    else
        ctx.out() << art.uuid() << '\t' << path << '\n';
    return Success;
}

int runList(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}}, 0, 0, 1);
    if (!args)
        return Usage;
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    ORVDBManager &m = *lib->manager;
    // Files that arrived by hand or by a sync service join the list first.
    AppDelegate::sharedDelegate()->reloadUncategoriesDocumentToLibraryWithURL(lib->path);

    QList<ORVDBArticle> rows = m.getAllItemsDBArticleWithSort(0);
    std::stable_sort(rows.begin(), rows.end(), [](const ORVDBArticle &a, const ORVDBArticle &b) {
        return a.dateArt() != b.dateArt() ? a.dateArt() > b.dateArt() : a.uuid() > b.uuid();
    });
    const auto cats = m.dicArticleCatsMaps();
    const auto tags = m.dicArticleTagsMaps();

    QJsonArray list;
    for (const ORVDBArticle &a : rows) {
        const QString path = ORVLibraryFolder::documentPath(lib->path, a.uuid());
        const ORVDocumentTitleAndSummary text = documentTitleAndSummaryWithFile(path);
        if (!args->isSet(QStringLiteral("json"))) {
            ctx.out() << a.uuid() << "  " << a.dateArtNSDate().toString(QStringLiteral("yyyy-MM-dd HH:mm")) << "  "
                      << text.title << '\n';
            continue;
        }
        QJsonArray categories;
        const ORVDBManager::LinkRecord c = cats.value(a.uuid());
        for (int i = 0; i < c.uuids.size(); ++i)
            categories.append(QJsonObject{{QStringLiteral("uuid"), c.uuids[i]}, {QStringLiteral("name"), c.names[i]}});
        list.append(QJsonObject{
            {QStringLiteral("uuid"), a.uuid()},
            {QStringLiteral("title"), text.title},
            {QStringLiteral("dateAdd"), isoDate(a.dateAddNSDate().toSecsSinceEpoch())},
            {QStringLiteral("dateModif"), isoDate(a.dateModifNSDate().toSecsSinceEpoch())},
            {QStringLiteral("dateArt"), isoDate(a.dateArtNSDate().toSecsSinceEpoch())},
            {QStringLiteral("categories"), categories},
            {QStringLiteral("tags"), QJsonArray::fromStringList(tags.value(a.uuid()).names)},
            {QStringLiteral("path"), path},
        });
    }
    if (args->isSet(QStringLiteral("json")))
        ctx.out() << QJsonDocument(list).toJson(QJsonDocument::Indented);
    return Success;
}

int runDoc(Context &ctx)
{
    return runSubcommand(ctx, {
                                  {"new", &runNew},
                                  {"list", &runList},
                              });
}

} // namespace

ORVO_CLI_COMMAND({"doc", "make and list library documents",
                  "orvo [--library DIR] doc new [--cat UUID] [--title TEXT] [--json]\n"
                  "orvo [--library DIR] doc list [--json]\n"
                  "\n"
                  "new makes a document: docs/<id>.md holding \"# \" and the title, in the\n"
                  "category UUID when given (ids: 'orvo library info'). It prints the new\n"
                  "document's id and file.\n"
                  "\n"
                  "list shows every document that is not in the trash, newest first: id,\n"
                  "date and title (the first line of its file). With --json each carries its\n"
                  "title, dates (ISO 8601, UTC), categories, tags and file. Document files in\n"
                  "docs/ that the library does not know yet (copied in by hand or by a sync\n"
                  "service) are added first, uncategorized.",
                  &runDoc});
