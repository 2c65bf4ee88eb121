// orvo doc: library documents. Each subcommand is a function and a row of
// the table in runDoc (and its usage line in the help below).
#include "cli/CliLibraryLists.h"
#include "cli/CliSubcommand.h"
#include "library/ORVCategoryEditor.h"
#include "library/ORVDocumentDropHandler.h"
#include "library/ORVLibraryDocuments.h"

#include <QRegularExpression>

using namespace orvo::cli;

namespace {

const QString kJson = QStringLiteral("json");

void printDocumentIDs(Context &ctx, const QString &what, const QList<qint64> &ids, bool json)
{
    if (json) {
        QJsonArray array;
        for (qint64 id : ids)
            array.append(id);
        printJson(ctx, QJsonObject{{what, array}});
        return;
    }
    for (qint64 id : ids)
        ctx.out() << id << '\n';
}

int runNew(Context &ctx)
{
    const auto args = ctx.parse(
        {{QStringLiteral("cat"), true}, {QStringLiteral("tag"), true}, {QStringLiteral("title"), true}, {kJson}}, 0, 0, 1);
    if (!args)
        return Usage;
    std::optional<qint64> catUUID;
    if (args->isSet(QStringLiteral("cat"))) {
        bool ok = false;
        catUUID = args->value(QStringLiteral("cat")).toLongLong(&ok);
        if (!ok)
            return ctx.usageError(QStringLiteral("--cat takes a category id (see 'orvo tree')"));
    }
    if (catUUID && args->isSet(QStringLiteral("tag")))
        return ctx.usageError(QStringLiteral("a new document goes into a category or a tag, not both"));
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    // Everything is checked before anything is written.
    ORVCatTreeItem place;
    place.catType = ORVCatType::Inbox;
    if (catUUID) {
        const auto cat = m.itemDBCatWithUUID(*catUUID);
        if (!cat)
            return ctx.fail(QStringLiteral("the library %1 has no category %2 (see 'orvo tree')").arg(o->lib.path).arg(*catUUID));
        place.catType = cat->catType();
        place.uuid = cat->uuid();
    } else if (args->isSet(QStringLiteral("tag"))) {
        QString why;
        const auto tag = tagEntry(m, args->value(QStringLiteral("tag")), &why);
        if (!tag)
            return ctx.fail(why);
        place.catType = ORVCatType::Tag;
        place.uuid = tag->uuid;
        place.name = tag->name;
    }
    // A title is one line: line breaks in it become spaces.
    QString title = args->value(QStringLiteral("title"));
    title.replace(QRegularExpression(QStringLiteral("[\\r\\n\\x{2029}]+")), QStringLiteral(" "));
    QString why;
    const auto art = ORVLibraryDocuments(o->lib.manager, o->lib.path).newDocument(&place, title, &why);
    if (!art)
        return ctx.fail(why);
    const QString path = ORVLibraryFolder::documentPath(o->lib.path, art->uuid());
    if (args->isSet(kJson))
        printJson(ctx, QJsonObject{{QStringLiteral("uuid"), art->uuid()},
                                   {QStringLiteral("title"), title},
                                   {QStringLiteral("path"), path}});
    else
        ctx.out() << art->uuid() << '\t' << path << '\n';
    return Success;
}

int runList(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("in"), true},
                                 {QStringLiteral("sort"), true},
                                 {QStringLiteral("group")},
                                 {QStringLiteral("summary")},
                                 {kJson}},
                                0, 1, 1);
    if (!args)
        return Usage;
    std::optional<quint64> order;
    if (args->isSet(QStringLiteral("sort"))) {
        order = parseListOrder(args->value(QStringLiteral("sort")));
        if (!order)
            return ctx.usageError(QStringLiteral("--sort takes newest, oldest, manual, title, title-desc, modified "
                                                 "or modified-oldest"));
    }
    auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    QString why;
    const auto entry = parseEntry(m, args->positional(0, QStringLiteral("inbox")), &why);
    if (!entry)
        return ctx.fail(why);
    qint64 within = 0;
    if (args->isSet(QStringLiteral("in"))) {
        if (!entry->isTag)
            return ctx.usageError(QStringLiteral("--in limits the list of a tag (tag:NAME) to a place"));
        const auto place = parseEntry(m, args->value(QStringLiteral("in")), &why);
        if (!place)
            return ctx.fail(why);
        if (place->isTag || place->uuid == ORVCatType::Trash)
            return ctx.usageError(QStringLiteral("--in takes a category, uncategorized or recent"));
        within = place->uuid;
    }
    const bool isCategory = !entry->isTag && entry->uuid > 1000;
    if (order == ORVListOrderType::Manual && !isCategory)
        return ctx.usageError(QStringLiteral("only a category has a manual order"));
    if (args->isSet(QStringLiteral("group")) && !isCategory)
        return ctx.usageError(QStringLiteral("only a category's list can be grouped by sub-categories"));
    o->list->options.sortTypeOverride = order;
    if (args->isSet(QStringLiteral("group")))
        o->list->options.isGroupLibDocumentsList = true;

    QList<ORVLibraryListDataItem> rows =
        o->list->fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(entry->uuid, entry->isTag, within);
    // Every row is shown, so every row reads its title.
    ORVLibraryListController::setupTitlesOfItems(rows);
    if (args->isSet(kJson)) {
        const bool grouped = o->list->isGroupedListForCatUUID(entry->uuid, entry->isTag);
        QJsonArray list;
        for (qsizetype i = 0; i < rows.size(); ++i)
            list.append(rowJson(rows.at(i), i, grouped));
        printJson(ctx, list);
    } else {
        printRows(ctx, rows, args->isSet(QStringLiteral("summary")));
    }
    return Success;
}

// The documents named on the command line (all must exist), or the usage
// error when none is.
std::optional<QList<ORVDBArticle>> namedDocuments(Context &ctx, const Args &args, const CommandOrganiser &o)
{
    QString why;
    auto articles = existingDocuments(*o.lib.manager, args.positionals(), &why);
    if (!articles)
        ctx.fail(why);
    return articles;
}

int runStateChange(Context &ctx, bool toTrash)
{
    const auto args = ctx.parse({{kJson}}, 1, -1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    const QList<ORVLibraryListDataItem> rows = rowsWithArticles(*o->lib.manager, o->lib.path, *articles);
    const QList<qint64> done = toTrash ? o->list->moveToTrashAction(rows) : o->list->putBackAction(rows);
    printDocumentIDs(ctx, toTrash ? QStringLiteral("trashed") : QStringLiteral("restored"), done, args->isSet(kJson));
    if (done.size() != articles->size())
        return ctx.fail(QStringLiteral("%1 of %2 documents could not be changed").arg(articles->size() - done.size()).arg(articles->size()));
    return Success;
}

int runTrash(Context &ctx) { return runStateChange(ctx, true); }
int runRestore(Context &ctx) { return runStateChange(ctx, false); }

int runDelete(Context &ctx)
{
    const auto args = ctx.parse({{kJson}}, 1, -1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    const auto result = ORVLibraryDocuments(o->lib.manager, o->lib.path).deleteDBArticlesWithArray(*articles);
    printDocumentIDs(ctx, QStringLiteral("deleted"), result.deleted, args->isSet(kJson));
    for (qint64 id : result.notInTrash)
        ctx.err() << "orvo: document " << id << " is not in the trash and was not deleted (first: orvo doc trash " << id
                  << ")\n";
    for (const QString &error : result.errors)
        ctx.err() << "orvo: " << error << '\n';
    return result.deleted.size() == articles->size() ? Success : Failure;
}

int runImport(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("cat"), true}, {kJson}}, 1, -1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    qint64 target = 0;
    if (args->isSet(QStringLiteral("cat"))) {
        QString why;
        const auto cat = existingCategory(*o->lib.manager, args->value(QStringLiteral("cat")), &why);
        if (!cat)
            return ctx.fail(why);
        target = cat->uuid();
    }
    const auto result = ORVLibraryDocuments(o->lib.manager, o->lib.path).importToLibrary(args->positionals(), target);
    for (const QString &path : result.skipped)
        ctx.err() << "orvo: skipped " << path
                  << (QFileInfo::exists(path) ? " (not a Markdown or text file)" : " (no such file or folder)") << '\n';
    for (const QString &path : result.failed)
        ctx.err() << "orvo: could not import " << path << '\n';
    if (result.isNothingImported())
        return ctx.fail(ORVLibraryDocuments::importNothingMessage());
    if (args->isSet(kJson)) {
        QJsonArray imported;
        for (const ORVDBArticle &a : result.imported)
            imported.append(QJsonObject{{QStringLiteral("uuid"), a.uuid()},
                                        {QStringLiteral("path"), ORVLibraryFolder::documentPath(o->lib.path, a.uuid())}});
        printJson(ctx, QJsonObject{{QStringLiteral("imported"), imported},
                                   {QStringLiteral("failed"), QJsonArray::fromStringList(result.failed)},
                                   {QStringLiteral("skipped"), QJsonArray::fromStringList(result.skipped)}});
    } else {
        ctx.out() << "Imported " << result.imported.size() << (result.imported.size() == 1 ? " document" : " documents")
                  << '\n';
    }
    return result.failed.isEmpty() ? Success : Failure;
}

int runExport(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("to"), true}, {QStringLiteral("from"), true}, {kJson}}, 0, -1, 1);
    if (!args)
        return Usage;
    const QString to = args->value(QStringLiteral("to"));
    if (to.isEmpty())
        return ctx.usageError(QStringLiteral("--to DIR names the folder to export to"));
    if (args->positionals().isEmpty() == !args->isSet(QStringLiteral("from")))
        return ctx.usageError(QStringLiteral("name the documents by id, or a list with --from ENTRY"));
    auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    QList<ORVLibraryListDataItem> rows;
    QString why;
    if (args->isSet(QStringLiteral("from"))) {
        const auto entry = parseEntry(*o->lib.manager, args->value(QStringLiteral("from")), &why);
        if (!entry)
            return ctx.fail(why);
        rows = o->list->fetchListDataByCatUUIDIsFetchTagInCurrentCatUUID(entry->uuid, entry->isTag, 0);
    } else {
        const auto articles = namedDocuments(ctx, *args, *o);
        if (!articles)
            return Failure;
        rows = rowsWithArticles(*o->lib.manager, o->lib.path, *articles);
    }
    if (!QDir().mkpath(to))
        return ctx.fail(QStringLiteral("the folder %1 cannot be made").arg(to));
    const auto result =
        ORVLibraryDocuments(o->lib.manager, o->lib.path).exportDocumentsToMarkdown(rows, QFileInfo(to).absoluteFilePath());
    if (args->isSet(kJson))
        printJson(ctx, QJsonObject{{QStringLiteral("written"), QJsonArray::fromStringList(result.written)},
                                   {QStringLiteral("failed"), QJsonArray::fromStringList(result.failed)}});
    else
        for (const QString &path : result.written)
            ctx.out() << path << '\n';
    for (const QString &path : result.failed)
        ctx.err() << "orvo: could not export " << path << '\n';
    return result.failed.isEmpty() ? Success : Failure;
}

int runLink(Context &ctx)
{
    const auto args = ctx.parse({}, 1, -1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    ctx.out() << ORVLibraryListController::noteLinkTextWithItems(rowsWithArticles(*o->lib.manager, o->lib.path, *articles))
              << '\n';
    return Success;
}

int runMove(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("to"), true},
                                 {QStringLiteral("from"), true},
                                 {QStringLiteral("copy")},
                                 {QStringLiteral("remove")}},
                                1, -1, 1);
    if (!args)
        return Usage;
    if (!args->isSet(QStringLiteral("to")))
        return ctx.usageError(QStringLiteral("--to ENTRY names where the documents go"));
    if (args->isSet(QStringLiteral("copy")) && args->isSet(QStringLiteral("remove")))
        return ctx.usageError(QStringLiteral("--copy and --remove exclude each other"));
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    QString why;
    const auto to = parseEntry(m, args->value(QStringLiteral("to")), &why);
    if (!to)
        return ctx.fail(why);
    const auto from = parseEntry(m, args->value(QStringLiteral("from"), QStringLiteral("inbox")), &why);
    if (!from)
        return ctx.fail(why);
    ORVCatTreeItem target;
    target.uuid = to->uuid;
    target.name = to->name;
    if (to->isTag)
        target.catType = ORVCatType::Tag;
    else if (to->uuid > 1000)
        target.catType = m.itemDBCatWithUUID(to->uuid)->catType();
    else
        target.catType = to->uuid;
    if (!ORVDocumentDropHandler::validateDocumentsDrop(target))
        return ctx.usageError(QStringLiteral("documents go to a category, a tag or the trash, not to %1")
                                  .arg(args->value(QStringLiteral("to"))));
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    QList<ORVLibraryDocDragRecord> records;
    for (const ORVDBArticle &a : *articles)
        records.append({a.uuid(), a.state()});
    const auto operation = ORVDocumentDropHandler::operationWithModifiers(args->isSet(QStringLiteral("remove")),
                                                                          args->isSet(QStringLiteral("copy")));
    ORVDocumentDropHandler::ShownList shown;
    shown.fetchUUID = from->uuid;
    shown.isFetchTag = from->isTag;
    shown.fetchTagName = from->isTag ? from->name : QString();
    if (!ORVDocumentDropHandler(*o->tree).acceptDocumentsDrop(records, target, operation, shown))
        return ctx.fail(QStringLiteral("the documents could not be moved"));
    return Success;
}

int runReorder(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("before"), true}, {QStringLiteral("at"), true}, {kJson}}, 2, -1, 1);
    if (!args)
        return Usage;
    if (args->isSet(QStringLiteral("before")) && args->isSet(QStringLiteral("at")))
        return ctx.usageError(QStringLiteral("--before and --at exclude each other"));
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    QString why;
    const auto cat = existingCategory(m, args->positional(0), &why);
    if (!cat)
        return ctx.fail(why);
    const auto articles = existingDocuments(m, args->positionals().mid(1), &why);
    if (!articles)
        return ctx.fail(why);
    o->list->fetchAndReloadListDataByCatUUID(cat->uuid());
    const QList<ORVLibraryListDataItem> &rows = o->list->listContent;
    const auto firstRowOf = [&](qint64 uuid) -> int {
        for (int i = 0; i < rows.size(); ++i)
            if (!rows.at(i).isGroup && rows.at(i).art.uuid() == uuid)
                return i;
        return -1;
    };
    QList<int> dragged;
    for (const ORVDBArticle &a : *articles) {
        const int row = firstRowOf(a.uuid());
        if (row < 0)
            return ctx.fail(QStringLiteral("document %1 is not in the list of category %2").arg(a.uuid()).arg(cat->uuid()));
        dragged << row;
    }
    int drop = int(rows.size());
    if (args->isSet(QStringLiteral("at"))) {
        bool ok = false;
        drop = args->value(QStringLiteral("at")).toInt(&ok);
        if (!ok || drop < 0 || drop > rows.size())
            return ctx.usageError(QStringLiteral("--at takes a row of the list, 0 to %1").arg(rows.size()));
    } else if (args->isSet(QStringLiteral("before"))) {
        drop = firstRowOf(args->value(QStringLiteral("before")).toLongLong());
        if (drop < 0)
            return ctx.fail(QStringLiteral("document %1 is not in the list of category %2")
                                .arg(args->value(QStringLiteral("before")))
                                .arg(cat->uuid()));
    }
    switch (o->list->tableViewAcceptDropRow(dragged, drop)) {
    case ORVLibraryListController::ReorderResult::NotAvailable:
        return ctx.fail(QStringLiteral("the documents of category %1 cannot be reordered").arg(cat->uuid()));
    case ORVLibraryListController::ReorderResult::NeedsManualOrder:
        return ctx.fail(QStringLiteral("category %1 is not in the manual order; choose it first with 'orvo cat sort %1 "
                                       "manual'")
                            .arg(cat->uuid()));
    case ORVLibraryListController::ReorderResult::Done:
        break;
    }
    QList<ORVLibraryListDataItem> shown = o->list->listContent;
    ORVLibraryListController::setupTitlesOfItems(shown);
    if (args->isSet(kJson)) {
        QJsonArray list;
        for (qsizetype i = 0; i < shown.size(); ++i)
            list.append(rowJson(shown.at(i), i, true));
        printJson(ctx, list);
    } else {
        printRows(ctx, shown, false);
    }
    return Success;
}

// A comma-separated list and repeated values, as one list.
QStringList listValues(const Args &args, const QString &name)
{
    QStringList values;
    for (const QString &v : args.values(name))
        for (const QString &part : v.split(QLatin1Char(',')))
            if (!part.trimmed().isEmpty())
                values << part.trimmed();
    return values;
}

int runTags(Context &ctx)
{
    const auto args = ctx.parse(
        {{QStringLiteral("set"), true}, {QStringLiteral("add"), true}, {QStringLiteral("remove"), true}, {kJson}}, 1, 1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    const ORVDBArticle &art = articles->first();
    QStringList tags = m.articleTagsNamesByArticleUUID(art.uuid());
    const QStringList before = tags;
    if (args->isSet(QStringLiteral("set")))
        tags = listValues(*args, QStringLiteral("set"));
    for (const QString &name : listValues(*args, QStringLiteral("add")))
        if (!tags.contains(name))
            tags << name;
    for (const QString &name : listValues(*args, QStringLiteral("remove")))
        tags.removeAll(name);
    tags.removeDuplicates();
    if (tags != before) {
        if (!m.updateDBArticleWithTagNames(art, tags))
            return ctx.fail(QStringLiteral("the tags of document %1 could not be stored: %2").arg(art.uuid()).arg(m.db().lastErrorMessage()));
        o->tree->updateLibraryTreeTagsData();
        tags = m.articleTagsNamesByArticleUUID(art.uuid());
    }
    if (args->isSet(kJson))
        printJson(ctx, QJsonObject{{QStringLiteral("uuid"), art.uuid()}, {QStringLiteral("tags"), QJsonArray::fromStringList(tags)}});
    else
        for (const QString &name : std::as_const(tags))
            ctx.out() << name << '\n';
    return Success;
}

int runCats(Context &ctx)
{
    const auto args = ctx.parse(
        {{QStringLiteral("set"), true}, {QStringLiteral("add"), true}, {QStringLiteral("remove"), true}, {kJson}}, 1, 1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, false);
    if (!o)
        return Failure;
    ORVDBManager &m = *o->lib.manager;
    const auto articles = namedDocuments(ctx, *args, *o);
    if (!articles)
        return Failure;
    const ORVDBArticle &art = articles->first();
    // Every id is checked before anything changes.
    const auto categoryIDs = [&](const QString &option, QList<qint64> *ids) {
        QString why;
        for (const QString &word : listValues(*args, option)) {
            const auto cat = existingCategory(m, word, &why);
            if (!cat) {
                ctx.fail(why);
                return false;
            }
            *ids << cat->uuid();
        }
        return true;
    };
    QList<qint64> set, add, remove;
    if (!categoryIDs(QStringLiteral("set"), &set) || !categoryIDs(QStringLiteral("add"), &add) ||
        !categoryIDs(QStringLiteral("remove"), &remove))
        return Failure;
    QList<qint64> cats = m.articleCatsIIDSByArticleUUID(art.uuid());
    const QList<qint64> before = cats;
    if (args->isSet(QStringLiteral("set")))
        cats = set;
    for (qint64 id : add)
        if (!cats.contains(id))
            cats << id;
    for (qint64 id : remove)
        cats.removeAll(id);
    if (cats != before && !m.updateDBArticleWithCatIIDS(art, cats))
        return ctx.fail(QStringLiteral("the categories of document %1 could not be stored: %2").arg(art.uuid()).arg(m.db().lastErrorMessage()));
    const ORVDBManager::LinkRecord now = m.dicArticleCatsMaps().value(art.uuid());
    if (args->isSet(kJson)) {
        QJsonArray list;
        for (qsizetype i = 0; i < now.uuids.size(); ++i)
            list.append(QJsonObject{{QStringLiteral("uuid"), now.uuids.at(i)}, {QStringLiteral("name"), now.names.at(i)}});
        printJson(ctx, QJsonObject{{QStringLiteral("uuid"), art.uuid()}, {QStringLiteral("categories"), list}});
    } else {
        for (qsizetype i = 0; i < now.uuids.size(); ++i)
            ctx.out() << now.uuids.at(i) << '\t' << now.names.at(i) << '\n';
    }
    return Success;
}

int runDoc(Context &ctx)
{
    return runSubcommand(ctx, {
                                  {"new", &runNew},
                                  {"list", &runList},
                                  {"trash", &runTrash},
                                  {"restore", &runRestore},
                                  {"delete", &runDelete},
                                  {"import", &runImport},
                                  {"export", &runExport},
                                  {"link", &runLink},
                                  {"move", &runMove},
                                  {"reorder", &runReorder},
                                  {"tags", &runTags},
                                  {"cats", &runCats},
                              });
}

} // namespace

ORVO_CLI_COMMAND({"doc", "make, list, arrange, import and export library documents",
                  "orvo [--library DIR] doc new [--cat UUID | --tag NAME] [--title TEXT] [--json]\n"
                  "orvo [--library DIR] doc list [ENTRY] [--in PLACE] [--sort ORDER] [--group] [--summary] [--json]\n"
                  "orvo [--library DIR] doc trash|restore UUID... [--json]\n"
                  "orvo [--library DIR] doc delete UUID... [--json]\n"
                  "orvo [--library DIR] doc import [--cat UUID] FILE|FOLDER... [--json]\n"
                  "orvo [--library DIR] doc export --to DIR (UUID... | --from ENTRY) [--json]\n"
                  "orvo [--library DIR] doc link UUID...\n"
                  "orvo [--library DIR] doc move UUID... --to ENTRY [--from ENTRY] [--copy | --remove]\n"
                  "orvo [--library DIR] doc reorder CATEGORY UUID... [--before UUID | --at ROW] [--json]\n"
                  "orvo [--library DIR] doc tags UUID [--set A,B] [--add NAME]... [--remove NAME]... [--json]\n"
                  "orvo [--library DIR] doc cats UUID [--set ID,ID] [--add ID]... [--remove ID]... [--json]\n"
                  "\n"
                  "ENTRY names an entry of the tree ('orvo tree'): inbox (every document not\n"
                  "in the trash), recent, uncategorized, trash, a category's id, or\n"
                  "tag:NAME (or tag:ID).\n"
                  "\n"
                  "new makes a document: docs/<id>.md holding \"# \" and the title, in the\n"
                  "category or with the tag given, and prints its id and file.\n"
                  "\n"
                  "list shows the documents of an entry (default inbox): id, date and title,\n"
                  "with --summary also the text after the title. A category lists its\n"
                  "sub-categories' documents too, in its top category's order, grouped by\n"
                  "sub-category (\"== name ==\" rows) when that order is manual, with\n"
                  "--group, or when the preference isGroupLibDocumentsList is set; other\n"
                  "entries use the preference libraryDefaultSortType. --sort ORDER orders\n"
                  "this listing only: newest, oldest, manual (categories only), title,\n"
                  "title-desc, modified or modified-oldest; numbers in titles sort by value.\n"
                  "A tag's list with --in PLACE keeps the documents also in that category,\n"
                  "uncategorized or recent. With --json each row has its position (row),\n"
                  "isGroup, and for documents uuid, title, summary, state, sort, dateAdd,\n"
                  "dateModif, dateArt (ISO 8601, UTC), categories, tags, path and, in a\n"
                  "grouped list, the group it stands in; a group row carries the uuid of\n"
                  "its category. Files copied into docs/ by hand or by a sync service join\n"
                  "the library uncategorized before inbox and uncategorized are listed.\n"
                  "\n"
                  "trash moves documents to the library's trash, restore puts them back\n"
                  "into all their categories. delete removes documents that are in the trash\n"
                  "for good: their files and media go to the system's trash; documents not\n"
                  "in the trash are left alone (and the command fails). 'orvo trash empty'\n"
                  "deletes the whole trash.\n"
                  "\n"
                  "import takes Markdown and text files (md, markdown, mdown, txt, text) as\n"
                  "they are, and from a folder its .md, .markdown and .txt files (not those\n"
                  "of subfolders), copying the files their links point at into the\n"
                  "document's media folder and rewriting the links. --cat puts them into a\n"
                  "category.\n"
                  "\n"
                  "export copies documents to DIR as \"<title>.md\" (\"<title>-1.md\" and so\n"
                  "on when taken), with their media beside them, and prints the files.\n"
                  "\n"
                  "link prints \"[title](orvolib://id)\" for each document, one per line.\n"
                  "\n"
                  "move drops documents on an entry as dragging them onto the tree does:\n"
                  "into a category or tag and out of the one --from names (the entry the\n"
                  "list shows, default inbox) when it is of the same sort; with --copy\n"
                  "into the target only; with --remove out of it. Onto trash they go to\n"
                  "the trash; from the trash onto a category or tag they come back.\n"
                  "\n"
                  "reorder moves documents within a category in the manual order ('orvo cat\n"
                  "sort CATEGORY manual') to the gap before row ROW of its grouped list or\n"
                  "before document UUID (default: the end); in another sub-category's\n"
                  "group they change sub-category. It prints the list as it now stands.\n"
                  "\n"
                  "tags and cats show a document's tags or categories, or change them:\n"
                  "--set replaces them all, --add and --remove change one at a time.",
                  &runDoc});
