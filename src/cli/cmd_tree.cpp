// orvo tree: the library's tree with its counts.
#include "cli/CliLibraryLists.h"

using namespace orvo::cli;

namespace {

QString kindName(const ORVCatTreeItem &item)
{
    switch (item.catType) {
    case ORVCatType::Root:
        return QStringLiteral("root");
    case ORVCatType::Inbox:
        return QStringLiteral("inbox");
    case ORVCatType::Recent:
        return QStringLiteral("recent");
    case ORVCatType::Uncategorized:
        return QStringLiteral("uncategorized");
    case ORVCatType::Trash:
        return QStringLiteral("trash");
    case ORVCatType::SiteCategory:
        return QStringLiteral("site");
    case ORVCatType::TopCategory:
        return QStringLiteral("category");
    case ORVCatType::SubCategory:
        return QStringLiteral("subcategory");
    case ORVCatType::Tag:
        return QStringLiteral("tag");
    default:
        return QString::number(item.catType);
    }
}

QJsonObject entryJson(const ORVCatTreeItem &item)
{
    QJsonArray children;
    for (const ORVCatTreeItemPtr &child : item.sortedChildren())
        children.append(entryJson(*child));
    return QJsonObject{{QStringLiteral("name"), item.name},     {QStringLiteral("kind"), kindName(item)},
                       {QStringLiteral("uuid"), item.uuid},     {QStringLiteral("catType"), item.catType},
                       {QStringLiteral("sort"), item.sort},     {QStringLiteral("count"), item.itemCount},
                       {QStringLiteral("children"), children}};
}

void printEntry(Context &ctx, const ORVCatTreeItem &item, int depth)
{
    ctx.out() << QString(depth * 2, QLatin1Char(' '));
    if (item.catType == ORVCatType::Tag)
        ctx.out() << "tag:" << item.name << " [" << item.uuid << "]";
    else if (ORVDBCat::checkCatTypeIsDBCatItem(item.catType))
        ctx.out() << item.name << " [" << item.uuid << "]" << (item.catType == ORVCatType::SiteCategory ? " site" : "");
    else
        ctx.out() << item.name;
    if (item.catType != ORVCatType::Root)
        ctx.out() << " (" << item.itemCount << ")";
    ctx.out() << '\n';
    for (const ORVCatTreeItemPtr &child : item.sortedChildren())
        printEntry(ctx, *child, depth + 1);
}

int runTree(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}});
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    const ORVCatTreeItemPtr root = o->tree->root();
    if (!root)
        return ctx.fail(QStringLiteral("the tree of %1 cannot be read").arg(o->lib.path));
    if (args->isSet(QStringLiteral("json")))
        printJson(ctx, entryJson(*root));
    else
        printEntry(ctx, *root, 0);
    return Success;
}

} // namespace

ORVO_CLI_COMMAND({"tree", "show the library's tree of entries, categories and tags with their counts",
                  "orvo [--library DIR] tree [--json]\n"
                  "\n"
                  "Shows the tree as the library window does: \"Inbox\" (all documents\n"
                  "not in the trash) with the tags under it, \"Recent\", \"Uncategorized\",\n"
                  "\"Trash\", then the categories with their sub-categories, each with the\n"
                  "number of documents it holds (a category counts those of its\n"
                  "sub-categories too, each document once; the trash counts only in\n"
                  "\"Trash\"). Categories show their id in brackets, and \"site\" when\n"
                  "they are a static site; tags show as tag:NAME [id].\n"
                  "\n"
                  "With --json the root is an object with name, kind (root, inbox, recent,\n"
                  "uncategorized, trash, site, category, subcategory, tag), uuid, catType,\n"
                  "sort, count and children.",
                  &runTree});
