// orvo site: static sites built from site categories.
#include "cli/CliLibrary.h"
#include "cli/CliSubcommand.h"
#include "site/ORVSiteBuildController.h"
#include "site/ORVSiteSettings.h"
#include "site/ORVSiteStaticServer.h"
#include "site/ORVSiteTheme.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

using namespace orvo::cli;

namespace
{

const QString kJson = QStringLiteral("json");

void printJson(const QJsonValue &value)
{
    const QJsonDocument doc = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    writeStdout(doc.toJson(QJsonDocument::Indented));
}

QList<ORVDBCat> siteCategories(ORVDBManager &manager)
{
    QList<ORVDBCat> sites;
    for (const ORVDBCat &c : manager.getAllItemsDBCat())
        if (c.pid() == 0 && c.catType() == ORVCatType::SiteCategory)
            sites.append(c);
    std::stable_sort(sites.begin(), sites.end(), [](const ORVDBCat &a, const ORVDBCat &b) { return a.sort() < b.sort(); });
    return sites;
}

// The site a CAT word names: a category id (of the site or of any category
// in it), or the name of a site. Prints why and returns nullopt otherwise.
std::optional<ORVDBCat> siteCategory(Context &ctx, ORVDBManager &manager, const QString &word)
{
    bool isNumber = false;
    const qint64 uuid = word.toLongLong(&isNumber);
    if (isNumber) {
        const ORVCatTreeItemPtr top = manager.topCatByCatUUID(uuid);
        if (!top) {
            ctx.fail(QStringLiteral("there is no category %1 (see 'orvo site list')").arg(word));
            return std::nullopt;
        }
        const std::optional<ORVDBCat> row = manager.itemDBCatWithUUID(top->uuid);
        if (!row || row->catType() != ORVCatType::SiteCategory) {
            ctx.fail(QStringLiteral("the category \"%1\" is not a site; make it one with 'orvo cat site %2 on'")
                         .arg(top->name)
                         .arg(top->uuid));
            return std::nullopt;
        }
        return row;
    }
    for (const ORVDBCat &c : siteCategories(manager))
        if (c.name().compare(word, Qt::CaseInsensitive) == 0)
            return c;
    ctx.fail(QStringLiteral("there is no site named \"%1\" (see 'orvo site list')").arg(word));
    return std::nullopt;
}

QString outputFolderOf(const ORVDBCat &cat, const QString &libPath)
{
    if (cat.siteBuildPath().isEmpty())
        return QString();
    return QDir(ORVSiteBuildController::libraryModeBuildSiteURLByLibURL(libPath)).filePath(cat.siteBuildPath());
}

int runList(Context &ctx)
{
    const auto args = ctx.parse({{kJson}}, 0, 0, 1);
    if (!args)
        return Usage;
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    QJsonArray rows;
    for (const ORVDBCat &c : siteCategories(*lib->manager)) {
        const QString folder = outputFolderOf(c, lib->path);
        if (args->isSet(kJson)) {
            rows.append(QJsonObject{{QStringLiteral("uuid"), c.uuid()},
                                    {QStringLiteral("name"), c.name()},
                                    {QStringLiteral("siteName"), c.siteName()},
                                    {QStringLiteral("theme"), c.siteSkinName().isEmpty() ? ORVSiteTheme::defaultThemeName()
                                                                                         : c.siteSkinName()},
                                    {QStringLiteral("output"), folder},
                                    {QStringLiteral("siteLastBuildDate"), c.siteLastBuildDate()}});
        } else {
            const QString built = c.siteLastBuildDate() > 1000
                                      ? QDateTime::fromSecsSinceEpoch(c.siteLastBuildDate()).toString(Qt::ISODate)
                                      : QStringLiteral("never built");
            ctx.out() << c.uuid() << '\t' << c.name() << '\t' << built << '\t' << folder << '\n';
        }
    }
    if (args->isSet(kJson))
        printJson(rows);
    return Success;
}

int runSettings(Context &ctx)
{
    const auto args = ctx.parse({{kJson}}, 1, 3, 1);
    if (!args)
        return Usage;
    if (args->positionals().size() == 2)
        return ctx.usageError(QStringLiteral("give a KEY and its VALUE, or neither"));
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    std::optional<ORVDBCat> cat = siteCategory(ctx, *lib->manager, args->positional(0));
    if (!cat)
        return Failure;
    if (args->positionals().size() == 3) {
        QString why;
        if (!ORVSiteSettings::setValueForKey(*cat, args->positional(1), args->positional(2), &why))
            return ctx.fail(why);
        if (!lib->manager->saveItemDBCat(*cat))
            return ctx.fail(QStringLiteral("the setting could not be saved in the library"));
        cat = lib->manager->itemDBCatWithUUID(cat->uuid());
        if (!cat)
            return ctx.fail(QStringLiteral("the site could not be read back"));
    }
    const QJsonObject settings = ORVSiteSettings::settingsOfCat(*cat);
    if (args->isSet(kJson)) {
        printJson(settings);
        return Success;
    }
    for (const QString &key : ORVSiteSettings::keys()) {
        const QJsonValue v = settings.value(key);
        QString text = v.isString() ? v.toString() : v.isBool() ? (v.toBool() ? QStringLiteral("true")
                                                                               : QStringLiteral("false"))
                                                             : QString::number(v.toInteger());
        text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
        ctx.out() << key << '\t' << text << '\n';
    }
    return Success;
}

int runBuild(Context &ctx)
{
    const auto args =
        ctx.parse({{QStringLiteral("clear")}, {QStringLiteral("open")}, {QStringLiteral("output"), true}, {kJson}}, 1,
                  1, 1);
    if (!args)
        return Usage;
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    const std::optional<ORVDBCat> cat = siteCategory(ctx, *lib->manager, args->positional(0));
    if (!cat)
        return Failure;
    QString base = args->value(QStringLiteral("output"));
    if (!base.isEmpty()) {
        base = QFileInfo(base).absoluteFilePath();
        if (!QDir().mkpath(base))
            return ctx.fail(QStringLiteral("the folder %1 can't be made").arg(base));
    }
    const ORVSiteBuildController::Result result = ORVSiteBuildController::buildSiteByType(
        lib->manager, lib->path, cat->uuid(), args->isSet(QStringLiteral("clear")) ? 1 : 0, base);
    for (const QString &w : result.warnings)
        ctx.err() << "orvo: warning: " << w << Qt::endl;
    if (!result.started)
        return ctx.fail(result.message);
    if (args->isSet(kJson)) {
        printJson(QJsonObject{{QStringLiteral("ok"), result.succeeded},
                              {QStringLiteral("output"), result.outputURL},
                              {QStringLiteral("error"), result.message},
                              {QStringLiteral("writtenFiles"), result.writtenFiles},
                              {QStringLiteral("copiedMedia"), result.copiedMedia}});
    }
    if (!result.succeeded) {
        ctx.err() << "Build Site Errors!" << Qt::endl;
        return ctx.fail(result.message.isEmpty() ? QStringLiteral("a theme template failed") : result.message);
    }
    if (!args->isSet(kJson))
        ctx.out() << result.outputURL << '\n';
    const QString index = QDir(result.outputURL).filePath(QStringLiteral("index.html"));
    if (args->isSet(QStringLiteral("open")) && QFileInfo(index).isFile()) {
        if (!QProcess::startDetached(QStringLiteral("xdg-open"), {index}))
            return ctx.fail(QStringLiteral("the site was built, but no browser could be started for %1").arg(index));
    }
    return Success;
}

int runThemes(Context &ctx)
{
    const auto args = ctx.parse({{kJson}}, 0, 0, 1);
    if (!args)
        return Usage;
    QJsonArray rows;
    const auto list = [&](const QString &dir, const char *where) {
        for (const QString &name : ORVSiteTheme::themeNamesInDirectory(dir)) {
            const QString path = QDir(dir).filePath(name);
            if (args->isSet(kJson))
                rows.append(QJsonObject{{QStringLiteral("name"), name},
                                        {QStringLiteral("where"), QString::fromLatin1(where)},
                                        {QStringLiteral("path"), path},
                                        {QStringLiteral("default"), name == ORVSiteTheme::defaultThemeName()}});
            else
                ctx.out() << name << '\t' << where << '\t' << path << '\n';
        }
    };
    list(ORVSiteTheme::shippedThemesDirectory(), "shipped");
    list(ORVSiteTheme::userThemesDirectory(), "user");
    if (args->isSet(kJson))
        printJson(rows);
    return Success;
}

int runServe(Context &ctx)
{
    const auto args = ctx.parse({{QStringLiteral("port"), true}, {QStringLiteral("output"), true}}, 1, 1, 1);
    if (!args)
        return Usage;
    bool ok = true;
    const int port = args->value(QStringLiteral("port"), QStringLiteral("8000")).toInt(&ok);
    if (!ok || port < 0 || port > 65535)
        return ctx.usageError(QStringLiteral("--port takes a number from 0 to 65535 (0: any free port)"));
    const auto lib = openCommandLibrary(ctx);
    if (!lib)
        return Failure;
    const std::optional<ORVDBCat> cat = siteCategory(ctx, *lib->manager, args->positional(0));
    if (!cat)
        return Failure;
    QString folder;
    if (args->isSet(QStringLiteral("output")) && !cat->siteBuildPath().isEmpty())
        folder = QDir(args->value(QStringLiteral("output"))).filePath(cat->siteBuildPath());
    else
        folder = outputFolderOf(*cat, lib->path);
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        return ctx.fail(QStringLiteral("the site \"%1\" has not been built yet: run 'orvo site build %2' first")
                            .arg(cat->name())
                            .arg(cat->uuid()));
    ORVSiteStaticServer server(QFileInfo(folder).absoluteFilePath());
    QString why;
    if (!server.listen(quint16(port), &why))
        return ctx.fail(why);
    ctx.out() << "Serving " << folder << " at http://127.0.0.1:" << server.port() << "/ (Ctrl+C stops)" << Qt::endl;
    return QCoreApplication::exec() == 0 ? Success : Failure;
}

int runSite(Context &ctx)
{
    return runSubcommand(ctx, {{"list", runList},
                               {"settings", runSettings},
                               {"build", runBuild},
                               {"themes", runThemes},
                               {"serve", runServe}});
}

} // namespace

ORVO_CLI_COMMAND({"site", "build static websites from site categories",
                  "usage: orvo site list [--json]\n"
                  "       orvo site settings CAT [KEY VALUE] [--json]\n"
                  "       orvo site build CAT [--clear] [--open] [--output DIR] [--json]\n"
                  "       orvo site themes [--json]\n"
                  "       orvo site serve CAT [--port N] [--output DIR]\n"
                  "\n"
                  "A site is a top category marked as a site; CAT is its id (or the id of any\n"
                  "category in it) or its name.\n"
                  "\n"
                  "list      the library's sites: id, name, last build, output folder.\n"
                  "settings  shows a site's settings, or sets one: name, siteName, siteURL,\n"
                  "          siteDes, siteOther, siteShareCode, siteSkinName (a theme of\n"
                  "          'orvo site themes'), siteDateFormat (a date pattern such as\n"
                  "          yyyy/MM/dd), sortType (0-6), sitePageSize (0: one page),\n"
                  "          siteListTextNum, isEnableLaTeX, isEnableChart, siteBuildPath,\n"
                  "          siteMainMenuData (a JSON array of {name, url, className, target}),\n"
                  "          siteExtValue (a JSON object), ext.NAME (one extension value),\n"
                  "          siteFavicon (the image host key).\n"
                  "build     builds the site into its folder below the build folder (the one\n"
                  "          chosen in the preferences, else themes/Site; --output DIR picks\n"
                  "          another) and prints the folder. An update build writes every page\n"
                  "          and copies only changed media; --clear first deletes the HTML, XML,\n"
                  "          asset and media of the folder, keeping other files. --open opens\n"
                  "          index.html in the browser. A failed build prints \"Build Site\n"
                  "          Errors!\" and the first error, and exits 1.\n"
                  "themes    the shipped themes and the user's (in themes/SiteThemes).\n"
                  "serve     serves the built site on 127.0.0.1 only (port 8000 by default), so\n"
                  "          it can be looked at before uploading.\n",
                  &runSite});
