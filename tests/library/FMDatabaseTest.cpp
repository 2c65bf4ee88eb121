#include "library/FMDatabase.h"
#include "library/FMDatabaseQueue.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

struct TempDB {
    QTemporaryDir dir;
    QString path() const { return dir.filePath(QStringLiteral("t.db")); }
};

} // namespace

TEST(FMDatabase, BindsAndReadsEachTypeByNameAndIndex)
{
    TempDB t;
    FMDatabase db(t.path());
    ASSERT_TRUE(db.open());
    ASSERT_TRUE(db.executeUpdate(QStringLiteral("CREATE TABLE v (i INTEGER, r REAL, s TEXT, b BLOB, n TEXT, e TEXT)")));
    const QByteArray blob("a\0b\xff", 4);
    const QString text = QStringLiteral("Grüße 👋 \"quoted\" ' ;");
    ASSERT_TRUE(db.executeUpdate(QStringLiteral("INSERT INTO v VALUES (?, ?, ?, ?, ?, ?)"),
                                 {std::numeric_limits<qint64>::max(), 2.5, text, blob, QString(), QStringLiteral("")}));
    ASSERT_TRUE(db.executeUpdateWithParameterDictionary(
        QStringLiteral("INSERT INTO v (i, s, e) VALUES (:i, :s, :missing)"),
        {{QStringLiteral("i"), quint64(std::numeric_limits<quint64>::max())}, {QStringLiteral("s"), true}}));

    FMResultSet rs = db.executeQuery(QStringLiteral("SELECT * FROM v ORDER BY rowid"));
    ASSERT_TRUE(rs.next());
    EXPECT_EQ(rs.longLongIntForColumn(QStringLiteral("I")), std::numeric_limits<qint64>::max()); // names ignore case
    EXPECT_DOUBLE_EQ(rs.doubleForColumn(1), 2.5);
    EXPECT_EQ(rs.stringForColumn(QStringLiteral("s")), text);
    EXPECT_EQ(rs.dataForColumn(QStringLiteral("b")), blob);
    EXPECT_TRUE(rs.columnIsNull(QStringLiteral("n")));
    EXPECT_TRUE(rs.stringForColumn(QStringLiteral("n")).isNull());
    EXPECT_FALSE(rs.stringForColumn(QStringLiteral("e")).isNull()); // "" is not NULL
    EXPECT_EQ(rs.objectForColumn(0).typeId(), QMetaType::LongLong);
    EXPECT_EQ(rs.objectForColumn(3).typeId(), QMetaType::QByteArray);
    EXPECT_EQ(rs.columnIndexForName(QStringLiteral("nope")), -1);
    EXPECT_EQ(rs.longLongIntForColumn(QStringLiteral("nope")), 0);

    ASSERT_TRUE(rs.next());
    EXPECT_EQ(quint64(rs.longLongIntForColumn(0)), std::numeric_limits<quint64>::max());
    EXPECT_EQ(rs.stringForColumn(2), QStringLiteral("1")); // a boolean binds as an integer
    EXPECT_TRUE(rs.columnIsNull(5));                       // a missing named parameter stays NULL
    EXPECT_FALSE(rs.next());
    EXPECT_FALSE(rs);
}

TEST(FMDatabase, ErrorsAreValuesWithAMessage)
{
    TempDB t;
    FMDatabase db(t.path());
    EXPECT_FALSE(db.executeUpdate(QStringLiteral("SELECT 1"))); // not open
    ASSERT_TRUE(db.open());
    ASSERT_TRUE(db.executeUpdate(QStringLiteral("CREATE TABLE a (x, y)")));

    EXPECT_FALSE(db.executeUpdate(QStringLiteral("INSERT INTO a VALUES (?, ?)"), {1}));
    EXPECT_TRUE(db.lastErrorMessage().contains(QStringLiteral("2 parameters")));

    FMResultSet bad = db.executeQuery(QStringLiteral("SELECT nope FROM a"));
    EXPECT_FALSE(bad);
    EXPECT_FALSE(bad.next());
    EXPECT_TRUE(db.lastErrorMessage().contains(QStringLiteral("nope")));

    EXPECT_TRUE(db.executeUpdate(QStringLiteral("INSERT INTO a VALUES (1, 2)")));
    EXPECT_FALSE(db.hadError()); // a good statement clears the last error
    EXPECT_EQ(db.lastInsertRowId(), 1);
    EXPECT_EQ(db.changes(), 1);
}

TEST(FMDatabase, ScriptStopsAtTheFirstFailingStatement)
{
    TempDB t;
    FMDatabase db(t.path());
    ASSERT_TRUE(db.open());
    EXPECT_FALSE(db.executeStatements(
        QStringLiteral("CREATE TABLE a (x); INSERT INTO nothing VALUES (1); CREATE TABLE b (y);")));
    EXPECT_TRUE(db.tableExists(QStringLiteral("A")));
    EXPECT_FALSE(db.tableExists(QStringLiteral("b")));
}

TEST(FMDatabase, ClosingEndsResultSetsStillOpen)
{
    TempDB t;
    FMDatabase db(t.path());
    ASSERT_TRUE(db.open());
    ASSERT_TRUE(db.executeStatements(QStringLiteral("CREATE TABLE a (x); INSERT INTO a VALUES (1); INSERT INTO a VALUES (2);")));
    FMResultSet rs = db.executeQuery(QStringLiteral("SELECT x FROM a"));
    ASSERT_TRUE(rs.next());
    EXPECT_TRUE(db.close());
    EXPECT_FALSE(rs.next());
    EXPECT_EQ(rs.longLongIntForColumn(0), 0);
}

TEST(FMDatabase, PragmasRoundTripIncludingTheHighBit)
{
    TempDB t;
    FMDatabase db(t.path());
    ASSERT_TRUE(db.open());
    EXPECT_EQ(db.userVersion(), 0u);
    EXPECT_TRUE(db.setUserVersion(42));
    EXPECT_TRUE(db.setApplicationID(0x80000001u));
    db.close();
    ASSERT_TRUE(db.open());
    EXPECT_EQ(db.userVersion(), 42u);
    EXPECT_EQ(db.applicationID(), 0x80000001u);
}

TEST(FMDatabase, OpeningReadOnlyNeverMakesAFile)
{
    TempDB t;
    FMDatabase db(t.path());
    EXPECT_FALSE(db.openWithFlags(FMDatabase::OpenReadOnly));
    EXPECT_FALSE(db.openWithFlags(FMDatabase::OpenReadWrite));
    EXPECT_FALSE(QFileInfo::exists(t.path()));
    EXPECT_FALSE(db.lastErrorMessage().isEmpty());
}

TEST(FMDatabaseQueue, BlocksFromSeveralThreadsRunOneAtATime)
{
    TempDB t;
    FMDatabaseQueue queue(t.path());
    queue.inDatabase([](FMDatabase *db) {
        ASSERT_TRUE(db);
        ASSERT_TRUE(db->executeUpdate(QStringLiteral("CREATE TABLE n (thread INTEGER, i INTEGER)")));
        // No syncing to disk: this test is about ordering, not durability.
        ASSERT_TRUE(db->executeUpdate(QStringLiteral("PRAGMA synchronous = OFF")));
    });
    constexpr int kThreads = 4;
    constexpr int kRows = 50;
    std::vector<std::thread> threads;
    for (int th = 0; th < kThreads; ++th) {
        threads.emplace_back([&queue, th] {
            for (int i = 0; i < kRows; ++i) {
                queue.inDatabase([&](FMDatabase *db) {
                    // Read-then-write inside one block is atomic across threads.
                    FMResultSet rs = db->executeQuery(QStringLiteral("SELECT COUNT(*) FROM n"));
                    const qint64 before = rs.next() ? rs.longLongIntForColumn(0) : -1;
                    rs.close();
                    db->executeUpdate(QStringLiteral("INSERT INTO n VALUES (?, ?)"), {th, before});
                });
            }
        });
    }
    for (auto &th : threads)
        th.join();
    queue.inDatabase([](FMDatabase *db) {
        FMResultSet rs = db->executeQuery(QStringLiteral("SELECT COUNT(*), COUNT(DISTINCT i) FROM n"));
        ASSERT_TRUE(rs.next());
        EXPECT_EQ(rs.longLongIntForColumn(0), kThreads * kRows);
        EXPECT_EQ(rs.longLongIntForColumn(1), kThreads * kRows); // no two blocks saw the same count
    });
}

TEST(FMDatabaseQueue, NestedBlocksShareTheConnection)
{
    TempDB t;
    FMDatabaseQueue queue(t.path());
    bool inner = false;
    queue.inDatabase([&](FMDatabase *outer) {
        queue.inDatabase([&](FMDatabase *nested) {
            inner = true;
            EXPECT_EQ(nested, outer);
        });
    });
    EXPECT_TRUE(inner);

    FMDatabaseQueue missing(t.dir.filePath(QStringLiteral("absent.db")), FMDatabase::OpenReadWrite);
    missing.inDatabase([](FMDatabase *db) { EXPECT_EQ(db, nullptr); });
}
