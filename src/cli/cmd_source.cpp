// `orvo source`: the external folders — the list of sources, a folder's
// settings, its tree and its file rows.
#include "cli/CliCommand.h"
#include "core/MyPreferences.h"
#include "core/ORVAppPaths.h"
#include "library/ORVExternalListDataItem.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <functional>

using namespace orvo::cli;

namespace {

const Option kJson{QStringLiteral("json")};

QString sourceListPath() { return QDir(ORVAppPaths::applicationSupportURL()).filePath(QStringLiteral("externalSourceItems.data")); }

// The folder argument in normal form; "" (after a message) when it is not
// an existing folder.
QString existingFolder(Context &ctx, const QString &arg)
{
    const QString path = ORVExternalSourceItem::normalizedFolderPath(arg);
    if (!QFileInfo(path).isDir()) {
        ctx.fail(QFileInfo::exists(path) ? QStringLiteral("%1 is not a folder").arg(path)
                                         : QStringLiteral("no such folder: %1").arg(path));
        return QString();
    }
    return path;
}

void printJson(Context &ctx, const QJsonValue &v)
{
    ctx.out() << (v.isArray() ? QJsonDocument(v.toArray()) : QJsonDocument(v.toObject())).toJson(QJsonDocument::Indented);
}

// Parses FOLDER..., reads the list of sources, applies `edit` to each
// folder in turn and saves the list. An `edit` that fails has printed why;
// nothing is saved then.
int editSources(Context &ctx, bool keepUnreadableList,
                const std::function<bool(ORVExternalSourceItemManager &, const QString &)> &edit)
{
    const auto args = ctx.parse({}, 1, -1, 1);
    if (!args)
        return Usage;
    ORVExternalSourceItemManager manager(sourceListPath());
    QString error = manager.fetchError();
    if (!error.isEmpty()) {
        if (!keepUnreadableList)
            return ctx.fail(error);
        ctx.err() << "orvo: warning: " << error << " (a copy is kept beside it when the list is saved)\n";
    }
    for (const QString &arg : args->positionals()) {
        if (!edit(manager, arg))
            return Failure;
    }
    if (!manager.saveItems(&error))
        return ctx.fail(error);
    return Success;
}

int runAdd(Context &ctx)
{
    return editSources(ctx, true, [&](ORVExternalSourceItemManager &manager, const QString &arg) {
        const QString path = existingFolder(ctx, arg);
        if (path.isEmpty())
            return false;
        const bool added = manager.addItem(ORVExternalSourceItem::itemWithFolderPath(path));
        ctx.out() << (added ? "added " : "already a source: ") << path << '\n';
        return true;
    });
}

int runRemove(Context &ctx)
{
    return editSources(ctx, false, [&](ORVExternalSourceItemManager &manager, const QString &arg) {
        const auto item = manager.itemWithPath(arg);
        if (!item) {
            ctx.fail(QStringLiteral("not a source: %1 (see 'orvo source list')")
                         .arg(ORVExternalSourceItem::normalizedFolderPath(arg)));
            return false;
        }
        manager.removeItem(item);
        ctx.out() << "removed " << item->realURL() << '\n';
        return true;
    });
}

int runList(Context &ctx)
{
    const auto args = ctx.parse({kJson}, 0, 0, 1);
    if (!args)
        return Usage;
    ORVExternalSourceItemManager manager(sourceListPath());
    if (!manager.fetchError().isEmpty())
        return ctx.fail(manager.fetchError());
    QJsonArray rows;
    for (const auto &item : manager.items()) {
        const bool present = QFileInfo(item->realURL()).isDir();
        const QString name = present ? item->settingData()->name : QString();
        if (args->isSet(kJson.name)) {
            rows.append(QJsonObject{{QStringLiteral("path"), item->realURL()},
                                    {QStringLiteral("name"), name},
                                    {QStringLiteral("exists"), present}});
        } else {
            ctx.out() << item->realURL();
            if (!present)
                ctx.out() << "\t(missing)";
            else if (name != QFileInfo(item->realURL()).fileName())
                ctx.out() << '\t' << name;
            ctx.out() << '\n';
        }
    }
    if (args->isSet(kJson.name))
        printJson(ctx, rows);
    return Success;
}

int runSettings(Context &ctx)
{
    const auto args = ctx.parse({kJson, {QStringLiteral("unset"), true}}, 1, 3, 1);
    if (!args)
        return Usage;
    if (args->positionals().size() == 2)
        return ctx.usageError(QStringLiteral("a setting needs a KEY and a VALUE"));
    const QString folder = existingFolder(ctx, args->positional(0));
    if (folder.isEmpty())
        return Failure;
    ORVExternalSettingData settings(folder);
    QString error;
    // A file that is there but not readable keeps the defaults; say so, since
    // saving would replace it.
    if (!settings.fetchNewlerData(&error) && !error.isEmpty())
        ctx.err() << "orvo: warning: " << error << "; the defaults are used\n";
    const bool change = args->positionals().size() == 3 || args->isSet(QStringLiteral("unset"));
    if (args->positionals().size() == 3 &&
        !settings.setValueFromText(args->positional(1), args->positional(2), &error))
        return ctx.fail(error);
    for (const QString &key : args->values(QStringLiteral("unset"))) {
        if (!settings.unsetValue(key, &error))
            return ctx.fail(error);
    }
    if (change && !settings.saveData(&error))
        return ctx.fail(error);
    if (args->isSet(kJson.name)) {
        printJson(ctx, settings.toJson());
    } else if (!change) {
        const QJsonObject o = settings.toJson();
        for (const QString &key : ORVExternalSettingData::allKeys()) {
            const QJsonValue v = o.value(key);
            ctx.out() << key << " = "
                      << (v.isUndefined() ? QStringLiteral("(null)")
                          : v.isBool()    ? QString::fromLatin1(v.toBool() ? "true" : "false")
                          : v.isDouble()  ? QString::number(qint64(v.toDouble()))
                                          : v.toString())
                      << '\n';
        }
    }
    return Success;
}

// Runs `body` with the parsed words and the tree of the FOLDER argument,
// read as a source of its own (named by its settings).
int runOnFolderTree(Context &ctx, const std::function<int(const Args &, const ORVExternalTree::ItemPtr &)> &body)
{
    const auto args = ctx.parse({kJson}, 1, 1, 1);
    if (!args)
        return Usage;
    const QString folder = existingFolder(ctx, args->positional(0));
    if (folder.isEmpty())
        return Failure;
    return body(*args, ORVExternalTree::buildSourceItem(ORVExternalSourceItem::itemWithFolderPath(folder)));
}

void printTree(Context &ctx, const ORVExternalCategoryItem &item, int depth)
{
    ctx.out() << QString(depth * 2, QLatin1Char(' ')) << item.name << " (" << item.itemCount << ")\n";
    for (const auto &child : item.children)
        printTree(ctx, *child, depth + 1);
}

int runTree(Context &ctx)
{
    return runOnFolderTree(ctx, [&](const Args &args, const ORVExternalTree::ItemPtr &tree) {
        if (args.isSet(kJson.name))
            printJson(ctx, tree->archive());
        else
            printTree(ctx, *tree, 0);
        return int(Success);
    });
}

void collectFolders(const ORVExternalCategoryItem &item, QStringList &out)
{
    out << item.fullPath;
    for (const auto &child : item.children)
        collectFolders(*child, out);
}

int runFiles(Context &ctx)
{
    return runOnFolderTree(ctx, [&](const Args &args, const ORVExternalTree::ItemPtr &tree) {
        // The folder's own order, else the one chosen for all external lists.
        qint64 orderBy = qint64(tree->settingData()->orderBy);
        if (orderBy == 0)
            orderBy = MyPreferences::sharedInstance()->externalModeSortType();
        QStringList folders;
        collectFolders(*tree, folders);
        const bool json = args.isSet(kJson.name);
        QJsonArray rows;
        for (const QString &f : std::as_const(folders)) {
            for (const auto &row : ORVExternalListDataItem::listDataItemsInFolder(f, orderBy, true)) {
                if (json)
                    rows.append(row->toJson());
                else
                    ctx.out() << row->realPath << '\t' << row->modificationDate.toString(Qt::ISODate) << '\t'
                              << row->fileSize << '\t' << row->content << '\n';
            }
        }
        if (json)
            printJson(ctx, rows);
        return int(Success);
    });
}

int runSource(Context &ctx)
{
    const QString sub = ctx.words().value(0);
    if (sub == QLatin1String("add"))
        return runAdd(ctx);
    if (sub == QLatin1String("remove"))
        return runRemove(ctx);
    if (sub == QLatin1String("list"))
        return runList(ctx);
    if (sub == QLatin1String("settings"))
        return runSettings(ctx);
    if (sub == QLatin1String("tree"))
        return runTree(ctx);
    if (sub == QLatin1String("files"))
        return runFiles(ctx);
    return ctx.usageError(sub.isEmpty() ? QStringLiteral("missing subcommand")
                                        : QStringLiteral("unknown subcommand \"%1\"").arg(sub));
}

} // namespace

ORVO_CLI_COMMAND({"source", "external folders: add, list, settings, tree, files",
                  "orvo source add FOLDER...\n"
                  "orvo source remove FOLDER...\n"
                  "orvo source list [--json]\n"
                  "orvo source settings FOLDER [KEY VALUE] [--unset KEY] [--json]\n"
                  "orvo source tree FOLDER [--json]\n"
                  "orvo source files FOLDER [--json]\n"
                  "\n"
                  "External folders are ordinary folders of Markdown files that Orvo edits in\n"
                  "place. 'add' and 'remove' change the list of sources (kept in the application\n"
                  "support folder); a folder is a source once, whatever path leads to it.\n"
                  "\n"
                  "'settings' prints a folder's settings, kept in FOLDER/.OrvoMetaData/setting.json,\n"
                  "or changes one: name, mediaFloder, fileExtension (text), newlinesToBR (0 the\n"
                  "preference, 1 on, 2 off), folderType (10 media beside each document, 11 media\n"
                  "in the source folder), orderBy (list order, below), autoUploadInsertedImage\n"
                  "(true/false), autoUploadInsertedImageKey (text). --unset makes mediaFloder,\n"
                  "fileExtension or autoUploadInsertedImageKey empty (left out of the file).\n"
                  "\n"
                  "'tree' prints the folder and its sub-folders with the number of documents in\n"
                  "each; hidden folders and links to folders are left out. 'files' prints one row\n"
                  "per document of the folder and its sub-folders (a supported extension: md,\n"
                  "markdown, txt, text, mdown, mkd, rmd, mkdn, mdwn, mdtxt, mdtext, taskpaper,\n"
                  "fountain, rst): path, modification date, size in bytes, and the first lines on\n"
                  "one line, tab-separated. Within a folder rows follow the folder's orderBy, or\n"
                  "when that is 0 the preference externalModeSortType: 0 newest first, 1 oldest\n"
                  "first, 3 title A-Z, 4 title Z-A, 5 last modified first, 6 last modified last.",
                  &runSource});
