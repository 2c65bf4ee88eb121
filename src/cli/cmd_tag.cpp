// orvo tag: the library's tags.
#include "cli/CliLibraryLists.h"
#include "cli/CliSubcommand.h"
#include "library/ORVCategoryEditor.h"

using namespace orvo::cli;

namespace {

int runDelete(Context &ctx)
{
    const auto args = ctx.parse({}, 1, 1, 1);
    if (!args)
        return Usage;
    const auto o = openCommandOrganiser(ctx, true);
    if (!o)
        return Failure;
    QString why;
    const auto tag = tagEntry(*o->lib.manager, args->positional(0), &why);
    if (!tag)
        return ctx.fail(why);
    // A tag that no document carries has no entry in the tree.
    ORVCatTreeItemPtr item = o->tree->tagItemWithID(tag->uuid);
    if (!item) {
        item = std::make_shared<ORVCatTreeItem>();
        item->catType = ORVCatType::Tag;
        item->uuid = tag->uuid;
        item->name = tag->name;
    }
    return ORVCategoryEditor(*o->tree).deleteCategoryOrTag(item, &why) ? Success : ctx.fail(why);
}

int runTag(Context &ctx) { return runSubcommand(ctx, {{"delete", &runDelete}}); }

} // namespace

ORVO_CLI_COMMAND({"tag", "delete tags",
                  "orvo [--library DIR] tag delete NAME|ID\n"
                  "\n"
                  "delete removes a tag from the library and from every document that has\n"
                  "it; the documents stay. Tags are made by giving them to documents\n"
                  "('orvo doc tags UUID --add NAME'); 'orvo tree' lists those in use.",
                  &runTag});
