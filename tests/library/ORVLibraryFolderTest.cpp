#include "library/FMDatabase.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QByteArray digest(const QString &path)
{
    return QCryptographicHash::hash(orvotest::readFile(path), QCryptographicHash::Sha256);
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
}

} // namespace

TEST(LibraryFolder, SetupMakesTheFirstCategoryAndTheWelcomeDocument)
{
    QTemporaryDir lib;
    QString error;
    ASSERT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(lib.path(), QStringLiteral("# Welcome\n\nÜber alles."), &error))
        << qPrintable(error);
    EXPECT_TRUE(ORVLibraryFolder::checkIsLibraryWithURL(lib.path()));
    EXPECT_FALSE(ORVLibraryFolder::checkLibraryDatabase(lib.path()).has_value());
    // Nothing but the database and the documents: no journal left behind.
    EXPECT_EQ(entries(lib.path()), QStringList({"docs", "mainlib.db"}));

    ORVDBManager m(ORVLibraryFolder::databasePath(lib.path()));
    const QList<ORVDBCat> cats = m.getAllItemsDBCat();
    ASSERT_EQ(cats.size(), 1);
    EXPECT_EQ(cats[0].name(), QStringLiteral("Orvo"));
    EXPECT_EQ(cats[0].catType(), ORVCatType::TopCategory);
    EXPECT_EQ(cats[0].sort(), 10);
    EXPECT_EQ(cats[0].pid(), 0);
    const QList<ORVDBArticle> docs = m.getAllItemsDBArticleWithSort(0);
    ASSERT_EQ(docs.size(), 1);
    const ORVDBArticle &w = docs[0];
    EXPECT_EQ(w.sort(), w.uuid());
    EXPECT_EQ(w.dateModif(), w.dateAdd());
    EXPECT_EQ(w.dateArt(), w.dateAdd());
    EXPECT_LE(qAbs(w.dateAdd() - w.uuid() / 10000), 1); // the id is the creation time
    EXPECT_EQ(m.articleCatsIIDSByArticleUUID(w.uuid()), QList<qint64>({cats[0].uuid()}));
    EXPECT_EQ(QString::fromUtf8(orvotest::readFile(ORVLibraryFolder::documentPath(lib.path(), w.uuid()))),
              QStringLiteral("# Welcome\n\nÜber alles."));

    FMDatabase db(ORVLibraryFolder::databasePath(lib.path()));
    ASSERT_TRUE(db.open());
    FMResultSet rs = db.executeQuery(QStringLiteral("PRAGMA integrity_check"));
    ASSERT_TRUE(rs.next());
    EXPECT_EQ(rs.stringForColumn(0), QStringLiteral("ok"));
    FMResultSet mode = db.executeQuery(QStringLiteral("PRAGMA journal_mode"));
    ASSERT_TRUE(mode.next());
    EXPECT_EQ(mode.stringForColumn(0), QStringLiteral("delete"));
}

TEST(LibraryFolder, SetupHandsAnEarlierDatabaseToTheTrash)
{
    QTemporaryDir lib;
    const QString dbPath = ORVLibraryFolder::databasePath(lib.path());
    ASSERT_TRUE(orvotest::writeFile(dbPath, QByteArray("an earlier database the user may want back")));
    QString error;
    ASSERT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(lib.path(), QStringLiteral("# "), &error)) << qPrintable(error);

    const QString trashed = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash/files");
    bool found = false;
    for (const QString &name : entries(trashed))
        found = found || orvotest::readFile(trashed + QLatin1Char('/') + name) ==
                             QByteArray("an earlier database the user may want back");
    EXPECT_TRUE(found);
    EXPECT_FALSE(ORVLibraryFolder::checkLibraryDatabase(lib.path()).has_value());
}

TEST(LibraryFolder, UnusableDatabasesAreNamedAndLeftUntouched)
{
    QTemporaryDir lib;
    QDir().mkpath(lib.filePath(QStringLiteral("docs")));
    const QString dbPath = ORVLibraryFolder::databasePath(lib.path());

    EXPECT_EQ(ORVLibraryFolder::checkLibraryDatabase(lib.path()).value_or(QString()), QStringLiteral("mainlib.db is missing"));

    struct Case {
        QByteArray content;
        QString reason;
    };
    const QList<Case> cases = {
        {QByteArray("this is a text file, not a database\n"), QStringLiteral("mainlib.db is not a SQLite database")},
        {QByteArray("SQL"), QStringLiteral("mainlib.db is not a SQLite database")},
        {QByteArray(), QStringLiteral("mainlib.db lacks the table \"cat\"")},
    };
    for (const Case &c : cases) {
        ASSERT_TRUE(orvotest::writeFile(dbPath, c.content));
        EXPECT_EQ(ORVLibraryFolder::checkLibraryDatabase(lib.path()).value_or(QString()), c.reason);
        EXPECT_EQ(orvotest::readFile(dbPath), c.content);
        EXPECT_EQ(entries(lib.path()), QStringList({"docs", "mainlib.db"}));
    }

    QFile::remove(dbPath);
    {
        FMDatabase db(dbPath);
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeStatements(ORVDBManager::schemaStatement().replace(
            QStringLiteral("CREATE TABLE tag (id INTEGER primary key autoincrement, name TEXT);"), QString())));
    }
    const QByteArray before = digest(dbPath);
    EXPECT_EQ(ORVLibraryFolder::checkLibraryDatabase(lib.path()).value_or(QString()),
              QStringLiteral("mainlib.db lacks the table \"tag\""));
    EXPECT_EQ(digest(dbPath), before);

    {
        FMDatabase db(dbPath);
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeUpdate(QStringLiteral("CREATE TABLE tag (id INTEGER primary key, label TEXT)")));
    }
    EXPECT_EQ(ORVLibraryFolder::checkLibraryDatabase(lib.path()).value_or(QString()),
              QStringLiteral("the table \"tag\" in mainlib.db lacks the column \"name\""));
}

TEST(LibraryFolder, StrayPassRegistersNumberedDocumentsOnlyOnce)
{
    QTemporaryDir lib;
    ASSERT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(lib.path(), QStringLiteral("# ")));
    const QString docs = lib.filePath(QStringLiteral("docs"));
    for (const char *name : {"17000000001234.md", "146143050845.md", "12345.md", "17000000005678.txt",
                             "17000000009999 copy.md", "notes.md"})
        ASSERT_TRUE(orvotest::writeFile(docs + QLatin1Char('/') + QLatin1String(name), QByteArray("# x")));
    QDir().mkpath(docs + QStringLiteral("/media/17000000001234"));
    QDir().mkpath(docs + QStringLiteral("/17000000004444.md")); // a folder, not a document

    ORVDBManager m(ORVLibraryFolder::databasePath(lib.path()));
    EXPECT_EQ(ORVLibraryFolder::registerStrayDocuments(m, lib.path()), 1);
    const std::optional<ORVDBArticle> row = m.itemDBArticleWithUUID(17000000001234);
    ASSERT_TRUE(row.has_value());
    EXPECT_EQ(row->state(), ORVDBArticle::StateNormal);
    EXPECT_EQ(row->type(), 0);
    EXPECT_EQ(row->sort(), 17000000001234);
    EXPECT_EQ(row->dateAdd(), 1700000000);
    EXPECT_EQ(row->dateArt(), row->dateModif());
    EXPECT_LE(qAbs(row->dateModif() - QDateTime::currentSecsSinceEpoch()), 5);
    EXPECT_TRUE(m.articleCatsIIDSByArticleUUID(17000000001234).isEmpty());
    EXPECT_EQ(m.getAllItemsDBArticleCount(), 2);

    EXPECT_EQ(ORVLibraryFolder::registerStrayDocuments(m, lib.path()), 0);
    EXPECT_EQ(m.getAllItemsDBArticleCount(), 2);

    ORVDBManager broken(lib.filePath(QStringLiteral("absent.db")));
    EXPECT_EQ(ORVLibraryFolder::registerStrayDocuments(broken, lib.path()), -1);
    EXPECT_FALSE(QFileInfo::exists(lib.filePath(QStringLiteral("absent.db"))));
}
