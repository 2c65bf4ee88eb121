// orvo library init|info
#include "cli/CliLibrary.h"
#include "cli/CliSubcommand.h"
#include "core/ORVAppPaths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace orvo::cli;

namespace {

int runInit(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("force")}}, 0, 1, 1);
    if (!args)
        return Usage;
    QString dir = args->positional(0, ctx.libraryOverride());
    if (dir.isEmpty())
        dir = ORVAppPaths::libraryModeMainDirectorySystemDefaultURL();
    if (dir.isEmpty())
        return ctx.fail(QStringLiteral("the default library folder cannot be made in the documents folder"));
    dir = QFileInfo(dir).absoluteFilePath();

    if (QFileInfo(dir).exists() && !QFileInfo(dir).isDir())
        return ctx.fail(QStringLiteral("%1 is a file, not a folder").arg(dir));
    const bool hasDatabase = QFileInfo::exists(ORVLibraryFolder::databasePath(dir));
    if (hasDatabase && !args->isSet(QStringLiteral("force"))) {
        const QString what = ORVLibraryFolder::checkIsLibraryWithURL(dir)
                                 ? QStringLiteral("%1 is a library already").arg(dir)
                                 : QStringLiteral("%1 holds a mainlib.db already").arg(dir);
        return ctx.fail(what + QStringLiteral(": nothing was changed (with --force its mainlib.db goes to the trash "
                                              "and a new one is made; the documents in docs/ stay)"));
    }

    QString error;
    if (!ORVLibraryFolder::libraryModeSetupMainDatabase(dir, AppDelegate::fetchWelcomeContent(), &error))
        return ctx.fail(QStringLiteral("cannot make the library %1: %2").arg(dir, error));
    AppDelegate *app = AppDelegate::sharedDelegate();
    if (!app->setLibraryModeMainURL(dir, &error))
        return ctx.fail(QStringLiteral("the library %1 was made but cannot become the main library: %2").arg(dir, error));
    // As after the first-run wizard: the desktop app opens the library.
    app->prfs()->setIsAppInstalled(true);
    app->prfs()->synchronize();

    ctx.out() << "Made the library " << QDir::toNativeSeparators(app->libraryModeMainURL())
              << "; it is now the main library.\n";
    return Success;
}

QJsonArray categoryRows(const QList<ORVCatTreeItemPtr> &items, int depth)
{
    QJsonArray rows;
    for (const ORVCatTreeItemPtr &item : items) {
        rows.append(QJsonObject{{QStringLiteral("uuid"), item->uuid},
                                {QStringLiteral("name"), item->name},
                                {QStringLiteral("site"), item->catType == ORVCatType::SiteCategory},
                                {QStringLiteral("depth"), depth},
                                {QStringLiteral("documents"), item->itemCount}});
        for (const QJsonValue &child : categoryRows(item->sortedChildren(), depth + 1))
            rows.append(child);
    }
    return rows;
}

int runInfo(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("json")}}, 0, 0, 1);
    if (!args)
        return Usage;
    const bool json = args->isSet(QStringLiteral("json"));
    bool isMain = false;
    QString why;
    const QString path = commandLibraryPath(ctx, &isMain, &why);
    if (path.isEmpty())
        return ctx.fail(why);
    if (const auto problem = commandLibraryProblem(path)) {
        if (json)
            ctx.out() << QJsonDocument(QJsonObject{{QStringLiteral("path"), path},
                                                   {QStringLiteral("main"), isMain},
                                                   {QStringLiteral("valid"), false},
                                                   {QStringLiteral("problem"), *problem}})
                             .toJson(QJsonDocument::Indented);
        return ctx.fail(*problem);
    }
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    ORVDBManager &m = *lib->manager;
    QList<ORVCatTreeItemPtr> tops = m.getAllItemDBCatTree();
    std::stable_sort(tops.begin(), tops.end(), [](const auto &a, const auto &b) { return a->sort < b->sort; });
    const QJsonArray categories = categoryRows(tops, 0);
    const QJsonObject info{
        {QStringLiteral("path"), lib->path},
        {QStringLiteral("main"), lib->isMain},
        {QStringLiteral("valid"), true},
        {QStringLiteral("documents"), m.getAllItemsDBArticleCount()},
        {QStringLiteral("uncategorized"), m.getUnCatsItemsDBArticleCount()},
        {QStringLiteral("trash"), m.getTrashItemsDBArticleCount()},
        {QStringLiteral("categories"), categories.size()},
        {QStringLiteral("tags"), m.getAllItemsTagsCatTreeItemWithDBIsLoadAll(nullptr, true).size()},
        {QStringLiteral("categoryTree"), categories},
    };
    if (json) {
        ctx.out() << QJsonDocument(info).toJson(QJsonDocument::Indented);
        return Success;
    }
    const auto line = [&](const QString &label, const QString &value) {
        ctx.out() << label.leftJustified(15) << value << '\n';
    };
    line(QStringLiteral("Library:"), lib->path);
    line(QStringLiteral("Valid:"), QStringLiteral("yes"));
    line(QStringLiteral("Main library:"), lib->isMain ? QStringLiteral("yes") : QStringLiteral("no"));
    for (const char *key : {"documents", "uncategorized", "trash", "categories", "tags"}) {
        QString label = QString::fromLatin1(key) + QLatin1Char(':');
        label[0] = label[0].toUpper();
        line(label, QString::number(info.value(QLatin1String(key)).toInteger()));
    }
    for (const QJsonValue &v : categories) {
        const QJsonObject c = v.toObject();
        ctx.out() << "  " << QString(c.value(QStringLiteral("depth")).toInt() * 2, QLatin1Char(' '))
                  << c.value(QStringLiteral("uuid")).toInteger() << "  " << c.value(QStringLiteral("name")).toString()
                  << (c.value(QStringLiteral("site")).toBool() ? " (site)" : "") << "  ("
                  << c.value(QStringLiteral("documents")).toInteger() << ")\n";
    }
    return Success;
}

int runLibrary(Context &ctx)
{
    return runSubcommand(ctx, {{"init", &runInit}, {"info", &runInfo}});
}

} // namespace

ORVO_CLI_COMMAND({"library", "make a library, or show what one holds",
                  "orvo library init [DIR] [--force]\n"
                  "orvo [--library DIR] library info [--json]\n"
                  "\n"
                  "init makes DIR (default: ~/Documents/mainlib) a new library, as the first run of\n"
                  "the desktop app does: the database mainlib.db, the category \"Orvo\" and a welcome\n"
                  "document in docs/. DIR then becomes the main library. A folder that holds a\n"
                  "mainlib.db already is refused; with --force that mainlib.db goes to the trash\n"
                  "and a new one is made (the files in docs/ stay and come back, uncategorized,\n"
                  "at the next 'orvo doc list').\n"
                  "\n"
                  "info shows the library's path, whether it is usable (and why not), the\n"
                  "counts of documents, uncategorized documents, trash, categories and tags,\n"
                  "and the categories with their ids (for 'orvo doc new --cat'). It exits 1\n"
                  "when the library is unusable.",
                  &runLibrary});
