// Makes the benchmark's library: the tldr pages as one site category with a
// sub-category per platform (page size 10, a site URL so that feeds are
// made, the shipped theme). Prints the site's id.
//
//   site_bench_library CORPUS_PAGES_DIR LIBRARY_DIR

#include "core/ORVAppPaths.h"
#include "library/FMDatabase.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    ORVAppPaths::initApplicationIdentity();
    if (argc != 3) {
        std::fprintf(stderr, "usage: site_bench_library CORPUS_PAGES_DIR LIBRARY_DIR\n");
        return 2;
    }
    const QString pages = QString::fromLocal8Bit(argv[1]);
    const QString lib = QString::fromLocal8Bit(argv[2]);
    QString error;
    if (!ORVLibraryFolder::libraryModeSetupMainDatabase(lib, QStringLiteral("# Welcome\n"), &error)) {
        std::fprintf(stderr, "site_bench_library: %s\n", qPrintable(error));
        return 1;
    }
    FMDatabase db(ORVLibraryFolder::databasePath(lib));
    if (!db.open())
        return 1;
    ORVDBManager manager(ORVLibraryFolder::databasePath(lib));
    db.executeUpdate(QStringLiteral("BEGIN"));
    qint64 uuid = 17000000000000;
    const auto insertCat = [&](const QString &name, qint64 pid, int type) {
        ORVDBCat cat;
        cat.setUuid(++uuid);
        cat.setPid(pid);
        cat.setName(name);
        cat.setCatType(type);
        cat.setSort(uuid);
        if (pid == 0) {
            cat.setSitePageSize(10);
            cat.setSiteName(QStringLiteral("tldr pages"));
            cat.setSiteURL(QStringLiteral("https://tldr.example.org/"));
            cat.setSiteBuildPath(QStringLiteral("tldr"));
        }
        db.executeUpdateWithParameterDictionary(
            QStringLiteral("INSERT INTO cat (pid, uuid, name, docName, catType, sort, sortType, siteURL, siteSkinName, "
                           "siteLastBuildDate, siteBuildPath, siteFavicon, siteLogo, siteDateFormat, sitePageSize, "
                           "siteListTextNum, siteName, siteDes, siteShareCode, siteHeader, siteOther, "
                           "siteMainMenuData, siteExtDef, siteExtValue, sitePostExtDef, siteEnableLaTeX, "
                           "siteEnableChart) VALUES (:pid, :uuid, :name, :docName, :catType, :sort, :sortType, "
                           ":siteURL, :siteSkinName, :siteLastBuildDate, :siteBuildPath, :siteFavicon, :siteLogo, "
                           ":siteDateFormat, :sitePageSize, :siteListTextNum, :siteName, :siteDes, :siteShareCode, "
                           ":siteHeader, :siteOther, :siteMainMenuData, :siteExtDef, :siteExtValue, "
                           ":sitePostExtDef, :siteEnableLaTeX, :siteEnableChart)"),
            cat.parameterDictionary());
        return cat.uuid();
    };
    const qint64 site = insertCat(QStringLiteral("tldr"), 0, ORVCatType::SiteCategory);
    int count = 0;
    for (const QString &platform : QDir(pages).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const qint64 cat = insertCat(platform, site, ORVCatType::SubCategory);
        for (const QFileInfo &fi : QDir(pages + QLatin1Char('/') + platform).entryInfoList(
                 {QStringLiteral("*.md")}, QDir::Files | QDir::Hidden, QDir::Name)) { // "..md" is a page, too
            ORVDBArticle art;
            art.setUuid(++uuid);
            art.setState(ORVDBArticle::StateNormal);
            art.setSort(art.uuid());
            art.setDateAdd(1500000000 + count * 60);
            art.setDateArt(art.dateAdd());
            art.setDateModif(art.dateAdd());
            if (!QFile::copy(fi.filePath(), ORVLibraryFolder::documentPath(lib, art.uuid())))
                return 1;
            manager.insertItemDBArticleWithDB(art, &db);
            db.executeUpdate(QStringLiteral("INSERT INTO cat_article (rid, aid) VALUES (?, ?)"), {cat, art.uuid()});
            ++count;
        }
    }
    if (!db.executeUpdate(QStringLiteral("COMMIT")))
        return 1;
    std::printf("%lld\n", static_cast<long long>(site));
    std::fprintf(stderr, "site_bench_library: %d documents\n", count);
    return 0;
}
