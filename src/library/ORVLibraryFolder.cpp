#include "library/ORVLibraryFolder.h"

#include "core/ORVAppPaths.h"
#include "core/date_uuid.h"
#include "library/FMDatabaseQueue.h"
#include "library/ORVDBManager.h"
#include "library/folder_entries.h"
#include "platform/ORVSystemTrash.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>

namespace {

// The columns the store reads and writes, table by table. A database that
// follows the schema has exactly these; one that lacks any is not handled.
struct TableColumns {
    const char *table;
    QStringList columns;
};

const QList<TableColumns> &requiredColumns()
{
    static const QList<TableColumns> tables = {
        {"cat",
         {QStringLiteral("id"), QStringLiteral("pid"), QStringLiteral("uuid"), QStringLiteral("name"),
          QStringLiteral("docName"), QStringLiteral("catType"), QStringLiteral("sort"), QStringLiteral("sortType"),
          QStringLiteral("siteURL"), QStringLiteral("siteSkinName"), QStringLiteral("siteLastBuildDate"),
          QStringLiteral("siteBuildPath"), QStringLiteral("siteFavicon"), QStringLiteral("siteLogo"),
          QStringLiteral("siteDateFormat"), QStringLiteral("sitePageSize"), QStringLiteral("siteListTextNum"),
          QStringLiteral("siteName"), QStringLiteral("siteDes"), QStringLiteral("siteShareCode"),
          QStringLiteral("siteHeader"), QStringLiteral("siteOther"), QStringLiteral("siteMainMenuData"),
          QStringLiteral("siteExtDef"), QStringLiteral("siteExtValue"), QStringLiteral("sitePostExtDef"),
          QStringLiteral("siteEnableLaTeX"), QStringLiteral("siteEnableChart")}},
        {"article",
         {QStringLiteral("id"), QStringLiteral("uuid"), QStringLiteral("type"), QStringLiteral("state"),
          QStringLiteral("sort"), QStringLiteral("dateAdd"), QStringLiteral("dateModif"), QStringLiteral("dateArt"),
          QStringLiteral("docName"), QStringLiteral("otherMedia"), QStringLiteral("buildResource"),
          QStringLiteral("postExtValue")}},
        {"cat_article", {QStringLiteral("id"), QStringLiteral("rid"), QStringLiteral("aid")}},
        {"tag", {QStringLiteral("id"), QStringLiteral("name")}},
        {"tag_article", {QStringLiteral("id"), QStringLiteral("rid"), QStringLiteral("aid")}},
    };
    return tables;
}

bool writeUtf8Atomically(const QString &path, const QString &text, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.write(text.toUtf8());
    if (!file.commit()) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

void setError(QString *error, const QString &message)
{
    if (error)
        *error = message;
}

} // namespace

QString ORVLibraryFolder::databasePath(const QString &libraryPath)
{
    return QDir(libraryPath).filePath(QStringLiteral("mainlib.db"));
}

QString ORVLibraryFolder::documentPath(const QString &libraryPath, qint64 uuid)
{
    // Plain concatenation: lists and searches make this path for every
    // document of a library.
    QString path = libraryPath;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path + QLatin1String("docs/") + QString::number(uuid) + QLatin1String(".md");
}

bool ORVLibraryFolder::checkIsLibraryWithURL(const QString &libraryPath)
{
    if (libraryPath.isEmpty())
        return false;
    const QDir dir(libraryPath);
    return QFileInfo::exists(dir.filePath(QStringLiteral("docs"))) &&
           QFileInfo::exists(dir.filePath(QStringLiteral("mainlib.db")));
}

QString ORVLibraryFolder::libraryModeDocsURLByLibURL(const QString &libraryPath)
{
    return ORVAppPaths::createSubDirectoryWithPath(libraryPath, QStringLiteral("docs"));
}

QString ORVLibraryFolder::libraryModeMetaDataURLByLibURL(const QString &libraryPath)
{
    return ORVAppPaths::createSubDirectoryWithPath(libraryPath, QStringLiteral("metadata"));
}

std::optional<QString> ORVLibraryFolder::checkLibraryDatabase(const QString &libraryPath)
{
    const QString path = databasePath(libraryPath);
    const QFileInfo fi(path);
    if (!fi.exists())
        return QStringLiteral("mainlib.db is missing");
    if (!fi.isFile())
        return QStringLiteral("mainlib.db is not a file");
    {
        // SQLite would take an empty file for an empty database; the header
        // check tells the common damage (a file of other content) at once.
        QFile f(path);
        if (!f.open(QIODevice::ReadOnly))
            return QStringLiteral("mainlib.db cannot be read: %1").arg(f.errorString());
        const QByteArray header = f.read(16);
        if (!header.isEmpty() && header != QByteArray("SQLite format 3\0", 16))
            return QStringLiteral("mainlib.db is not a SQLite database");
    }
    FMDatabase db(path);
    if (!db.openWithFlags(FMDatabase::OpenReadOnly))
        return QStringLiteral("mainlib.db cannot be opened: %1").arg(db.lastErrorMessage());
    for (const TableColumns &t : requiredColumns()) {
        const QString table = QString::fromLatin1(t.table);
        QStringList present;
        FMResultSet rs = db.executeQuery(QStringLiteral("PRAGMA table_info(%1)").arg(table));
        if (!rs)
            return QStringLiteral("mainlib.db cannot be read: %1").arg(db.lastErrorMessage());
        while (rs.next())
            present << rs.stringForColumn(QStringLiteral("name"));
        if (db.hadError())
            return QStringLiteral("mainlib.db cannot be read: %1").arg(db.lastErrorMessage());
        if (present.isEmpty())
            return QStringLiteral("mainlib.db lacks the table \"%1\"").arg(table);
        for (const QString &column : t.columns)
            if (!present.contains(column, Qt::CaseInsensitive))
                return QStringLiteral("the table \"%1\" in mainlib.db lacks the column \"%2\"").arg(table, column);
    }
    return std::nullopt;
}

bool ORVLibraryFolder::libraryModeSetupMainDatabase(const QString &libraryPath, const QString &welcomeText,
                                                    QString *error)
{
    const QString dbPath = databasePath(libraryPath);
    if (!ORVAppPaths::createURLIfNotExist(libraryPath)) {
        setError(error, QStringLiteral("cannot make the folder %1").arg(libraryPath));
        return false;
    }
    // An earlier database is never deleted, only handed to the trash.
    if (QFileInfo::exists(dbPath)) {
        QString why;
        if (!ORVSystemTrash::moveFileOrDirToTrashWithPath(dbPath, &why)) {
            setError(error, why);
            return false;
        }
    }
    {
        FMDatabase db(dbPath);
        if (!db.open() || !db.executeStatements(ORVDBManager::schemaStatement())) {
            const QString why = db.lastErrorMessage();
            db.close();
            QFile::remove(dbPath); // ours, made a moment ago, and of no use
            setError(error, QStringLiteral("cannot make %1: %2").arg(dbPath, why));
            return false;
        }
        db.close();
    }

    ORVDBManager manager(dbPath);
    ORVDBCat first;
    first.setUuid(nowDateUUID());
    first.setPid(0);
    first.setName(QStringLiteral("Orvo"));
    first.setCatType(ORVCatType::TopCategory);
    first.setSort(10);
    if (!manager.insertItemDBCat(first)) {
        setError(error, QStringLiteral("cannot add the first category to %1: %2").arg(dbPath, manager.db().lastErrorMessage()));
        return false;
    }
    const std::optional<ORVDBCat> stored = manager.itemDBCatWithUUID(first.uuid());
    if (!stored) {
        setError(error, QStringLiteral("the first category of %1 cannot be read back").arg(dbPath));
        return false;
    }

    const ORVDBArticle welcome = ORVDBArticle::newDocumentArticle();
    if (libraryModeDocsURLByLibURL(libraryPath).isEmpty()) {
        setError(error, QStringLiteral("cannot make the folder %1/docs").arg(libraryPath));
        return false;
    }
    if (!writeUtf8Atomically(documentPath(libraryPath, welcome.uuid()), welcomeText, error))
        return false;
    if (!manager.insertItemDBArticle(welcome)) {
        setError(error, QStringLiteral("cannot add the welcome document to %1: %2").arg(dbPath, manager.db().lastErrorMessage()));
        return false;
    }
    if (!manager.updateDBArticleWithCatIIDS(welcome, {stored->uuid()})) {
        setError(error, QStringLiteral("cannot link the welcome document in %1").arg(dbPath));
        return false;
    }
    return true;
}

int ORVLibraryFolder::registerStrayDocuments(ORVDBManager &manager, const QString &libraryPath)
{
    const QDir docs(QDir(libraryPath).filePath(QStringLiteral("docs")));
    if (!docs.exists())
        return 0;
    QList<qint64> stems;
    // The pass runs before lists are shown: one readdir, no stat per file.
    for (const ORVFolderFileEntry &entry : orvoListFolderFiles(docs.path())) {
        if (!entry.name.endsWith(QLatin1String(".md")))
            continue;
        const QString stem = entry.name.chopped(3);
        bool ok = false;
        const qint64 uuid = stem.toLongLong(&ok);
        // Digits only: "12 copy.md" or "+1e5.md" are not document files.
        if (!ok || stem.isEmpty() || !std::all_of(stem.begin(), stem.end(), [](QChar c) { return c.isDigit(); }))
            continue;
        if (uuid > kMinimumDocumentUUID)
            stems << uuid;
    }
    if (stems.isEmpty())
        return 0;

    int registered = -1;
    // Without OpenCreate: a database that is not there is not made here.
    FMDatabaseQueue queue(manager.dbURL(), FMDatabase::OpenReadWrite);
    queue.inDatabase([&](FMDatabase *db) {
        if (!db)
            return;
        QSet<qint64> known;
        {
            FMResultSet rs = db->executeQuery(QStringLiteral("SELECT uuid FROM article"));
            if (!rs)
                return;
            while (rs.next())
                known.insert(rs.longLongIntForColumn(0));
        }
        // One transaction for the whole pass: a sync service can bring
        // thousands of files at once, and a commit per row would cost a
        // disk sync per row (minutes instead of a fraction of a second).
        if (!db->executeUpdate(QStringLiteral("BEGIN")))
            return;
        int added = 0;
        const qint64 now = QDateTime::currentSecsSinceEpoch();
        for (qint64 uuid : std::as_const(stems)) {
            if (known.contains(uuid))
                continue;
            ORVDBArticle art;
            art.setUuid(uuid);
            art.setType(0);
            art.setState(ORVDBArticle::StateNormal);
            art.setSort(uuid);
            art.setDateAdd(uuid / 10000);
            art.setDateModif(now);
            art.setDateArt(now);
            if (manager.insertItemDBArticleWithDB(art, db))
                ++added;
        }
        if (db->executeUpdate(QStringLiteral("COMMIT")))
            registered = added;
        else
            db->executeUpdate(QStringLiteral("ROLLBACK"));
    });
    return registered;
}
