// orvo clean-images: images in a folder that no document refers to.
#include "cli/CliLibraryLists.h"
#include "library/ORVUnReferenceImagesScanner.h"

using namespace orvo::cli;

namespace {

int runCleanImages(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("delete")}, {QStringLiteral("json")}}, 1, 1);
    if (!args)
        return Usage;
    const QFileInfo folder(args->positional(0));
    if (!folder.isDir())
        return ctx.fail(QStringLiteral("%1 is not a folder").arg(args->positional(0)));
    const QString path = folder.absoluteFilePath();
    const QList<ORVLibraryMediaItem> images = ORVUnReferenceImagesScanner::scanFolder(path);
    QStringList moved, errors;
    if (args->isSet(QStringLiteral("delete")))
        moved = ORVUnReferenceImagesScanner::moveItemsToTrash(images, &errors);
    if (args->isSet(QStringLiteral("json"))) {
        QJsonArray list;
        for (const ORVLibraryMediaItem &image : images)
            list.append(QJsonObject{{QStringLiteral("path"), image.realPath},
                                    {QStringLiteral("name"), image.fileName},
                                    {QStringLiteral("size"), image.fileSize},
                                    {QStringLiteral("trashed"), moved.contains(image.realPath)}});
        printJson(ctx, QJsonObject{{QStringLiteral("folder"), path}, {QStringLiteral("images"), list}});
    } else {
        for (const ORVLibraryMediaItem &image : images)
            ctx.out() << image.fileName << '\n';
        ctx.err() << QStringLiteral("In Folder \"%1\", Found %2 Unreference Images.").arg(path).arg(images.size()) << '\n';
        if (args->isSet(QStringLiteral("delete")))
            ctx.err() << "Moved " << moved.size() << " to the trash.\n";
    }
    for (const QString &error : std::as_const(errors))
        ctx.err() << "orvo: " << error << '\n';
    return errors.isEmpty() ? Success : Failure;
}

} // namespace

ORVO_CLI_COMMAND({"clean-images", "list (or trash) the images in a folder that no document refers to",
                  "orvo clean-images FOLDER [--delete] [--json]\n"
                  "\n"
                  "Walks FOLDER and its subfolders and lists, relative to FOLDER, the images\n"
                  "(png, jpg, jpeg, gif, webp, svg, tiff) whose file name appears in no\n"
                  "document there (md, markdown, txt and the other document extensions),\n"
                  "ignoring case, also in its percent-encoded form. A name merely mentioned\n"
                  "counts as a reference, and two images of one name protect each other.\n"
                  "Hidden files and folders are left out.\n"
                  "\n"
                  "With --delete the images listed go to the system's trash; nothing is\n"
                  "deleted outright. With --json: folder, and images with path, name, size\n"
                  "and trashed.",
                  &runCleanImages});
