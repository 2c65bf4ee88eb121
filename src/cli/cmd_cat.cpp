// orvo cat: the categories of the library's tree.
#include "cli/CliLibraryLists.h"
#include "cli/CliSubcommand.h"
#include "library/ORVCategoryEditor.h"

using namespace orvo::cli;

namespace {

const QString kJson = QStringLiteral("json");

// The tree entry of a category named by id, or null after printing why.
ORVCatTreeItemPtr categoryItem(Context &ctx, const CommandOrganiser &o, const QString &word)
{
    QString why;
    const auto cat = existingCategory(*o.lib.manager, word, &why);
    ORVCatTreeItemPtr item = cat ? o.tree->categoryItemWithUUID(cat->uuid()) : nullptr;
    if (!item)
        ctx.fail(why.isEmpty() ? QStringLiteral("category %1 is not in the library's tree").arg(word) : why);
    return item;
}

void printCategory(Context &ctx, const ORVCatTreeItem &item, bool json)
{
    if (json)
        printJson(ctx, QJsonObject{{QStringLiteral("uuid"), item.uuid},
                                   {QStringLiteral("name"), item.name},
                                   {QStringLiteral("catType"), item.catType},
                                   {QStringLiteral("site"), item.catType == ORVCatType::SiteCategory},
                                   {QStringLiteral("parent"), item.parent ? item.parent->uuid : 0},
                                   {QStringLiteral("sort"), item.sort}});
    else
        ctx.out() << item.uuid << '\t' << item.name << '\n';
}

int runNew(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("parent"), true}, {QStringLiteral("site")}, {kJson}}, 0, 1, 1);
    if (!args)
        return Usage;
    if (args->isSet(QStringLiteral("parent")) && args->isSet(QStringLiteral("site")))
        return ctx.usageError(QStringLiteral("only a top category can be a site"));
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    ORVCategoryEditor editor(*o->tree);
    QString why;
    ORVCatTreeItemPtr item;
    if (args->isSet(QStringLiteral("parent"))) {
        const ORVCatTreeItemPtr parent = categoryItem(ctx, *o, args->value(QStringLiteral("parent")));
        if (!parent)
            return Failure;
        item = editor.newCategoryWithTreeNode(parent, args->positional(0), &why);
    } else {
        item = editor.newTopCategoryIsStaticSite(args->isSet(QStringLiteral("site")), args->positional(0), &why);
    }
    if (!item)
        return ctx.fail(why);
    printCategory(ctx, *item, args->isSet(kJson));
    return Success;
}

int runRename(Context &ctx)
{
    const auto args = ctx.parse({}, 2, 2, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    const ORVCatTreeItemPtr item = categoryItem(ctx, *o, args->positional(0));
    if (!item)
        return Failure;
    QString why;
    return ORVCategoryEditor(*o->tree).renameCategory(item, args->positional(1), &why) ? Success : ctx.fail(why);
}

int runMove(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("to"), true}, {QStringLiteral("index"), true}}, 1, -1, 1);
    if (!args)
        return Usage;
    const QString to = args->value(QStringLiteral("to"));
    if (to.isEmpty())
        return ctx.usageError(QStringLiteral("--to names the new parent: a category's id, or root"));
    int index = -1;
    if (args->isSet(QStringLiteral("index"))) {
        bool ok = false;
        index = args->value(QStringLiteral("index")).toInt(&ok);
        if (!ok || index < 0)
            return ctx.usageError(QStringLiteral("--index takes a position from 0"));
    }
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    ORVCatTreeItemPtr target;
    if (to.compare(QLatin1String("root"), Qt::CaseInsensitive) == 0) {
        target = o->tree->root();
        if (index >= 0)
            index += 4; // the positions count from the first category, after the fixed entries
    } else {
        target = categoryItem(ctx, *o, to);
        if (!target)
            return Failure;
    }
    QList<ORVCatTreeItemPtr> dragged;
    for (const QString &word : args->positionals()) {
        const ORVCatTreeItemPtr item = categoryItem(ctx, *o, word);
        if (!item)
            return Failure;
        dragged << item;
    }
    if (!ORVCategoryEditor::validateCategoryDrop(dragged, target.get(), index))
        return ctx.fail(QStringLiteral("a category cannot go into itself or one of its own sub-categories"));
    if (!ORVCategoryEditor(*o->tree).acceptCategoryDrop(dragged, target, index))
        return ctx.fail(QStringLiteral("the categories could not be moved: %1").arg(o->lib.manager->db().lastErrorMessage()));
    return Success;
}

int runDelete(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    const ORVCatTreeItemPtr item = categoryItem(ctx, *o, args->positional(0));
    if (!item)
        return Failure;
    QString why;
    return ORVCategoryEditor(*o->tree).deleteCategoryOrTag(item, &why) ? Success : ctx.fail(why);
}

int runSort(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 2, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    const ORVCatTreeItemPtr item = categoryItem(ctx, *o, args->positional(0));
    if (!item)
        return Failure;
    if (args->positionals().size() == 1) {
        ctx.out() << listOrderName(o->list->listOrderForCatUUID(item->uuid, false)) << '\n';
        return Success;
    }
    const auto order = parseListOrder(args->positional(1));
    if (!order)
        return ctx.usageError(QStringLiteral("the order is newest, oldest, manual, title, title-desc, modified or "
                                             "modified-oldest"));
    QString why;
    return ORVCategoryEditor(*o->tree).setCategoryListOrder(item->uuid, *order, &why) ? Success : ctx.fail(why);
}

int runSite(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 2, 1);
    if (!args)
        return Usage;
    const QString state = args->positional(1).toLower();
    if (!state.isEmpty() && state != QLatin1String("on") && state != QLatin1String("off"))
        return ctx.usageError(QStringLiteral("say on or off"));
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    const ORVCatTreeItemPtr item = categoryItem(ctx, *o, args->positional(0));
    if (!item)
        return Failure;
    if (state.isEmpty()) {
        ctx.out() << (item->catType == ORVCatType::SiteCategory ? "on" : "off") << '\n';
        return Success;
    }
    ORVCategoryEditor editor(*o->tree);
    QString why;
    const bool ok = state == QLatin1String("on") ? editor.setToSiteCategory(item, &why) : editor.setToLibCategory(item, &why);
    return ok ? Success : ctx.fail(why);
}

int runCat(Context &ctx)
{
    return runSubcommand(ctx, {
                                  {"new", &runNew},
                                  {"rename", &runRename},
                                  {"move", &runMove},
                                  {"delete", &runDelete},
                                  {"sort", &runSort},
                                  {"site", &runSite},
                              });
}

} // namespace

ORVO_CLI_COMMAND({"cat", "make, rename, move, order and delete categories",
                  "orvo [--library DIR] cat new [NAME] [--parent UUID | --site] [--json]\n"
                  "orvo [--library DIR] cat rename UUID NAME\n"
                  "orvo [--library DIR] cat move UUID... --to UUID|root [--index N]\n"
                  "orvo [--library DIR] cat delete UUID\n"
                  "orvo [--library DIR] cat sort UUID [ORDER]\n"
                  "orvo [--library DIR] cat site UUID [on|off]\n"
                  "\n"
                  "Categories are named by their ids ('orvo tree').\n"
                  "\n"
                  "new makes a top category after the others (\"Category\" when no name is\n"
                  "given), a static site with --site, or with --parent a sub-category after\n"
                  "the parent's others (\"Untitled\"). It prints the new id and name.\n"
                  "\n"
                  "move gives categories a new parent, as dragging them in the tree does:\n"
                  "below another category they become sub-categories, at the top (root)\n"
                  "plain top categories, or sites again if they were. --index places them\n"
                  "among the new parent's categories (0 first; default last); the parent's\n"
                  "categories are then numbered in their new order.\n"
                  "\n"
                  "delete removes a category with all its sub-categories; their documents\n"
                  "stay in the library (those left without a category become\n"
                  "uncategorized).\n"
                  "\n"
                  "sort shows or sets the order of a category's documents: newest, oldest,\n"
                  "manual, title, title-desc, modified or modified-oldest. The order\n"
                  "belongs to the top category and rules all its sub-categories; in the\n"
                  "manual order the list is grouped by sub-category and 'orvo doc reorder'\n"
                  "arranges it.\n"
                  "\n"
                  "site shows whether a top category is a static site, or makes it one\n"
                  "(on) or a plain category (off).",
                  &runCat});
