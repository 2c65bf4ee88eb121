#include "core/ORVBookmark.h"
#include "core/ORVCache.h"
#include "core/aes128.h"
#include "core/app_log.h"
#include "core/date_uuid.h"
#include "core/json_archive.h"
#include "support/TestEnv.h"

#include <QDateTime>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <thread>

TEST(ORVCache, AValueLivesForItsSecondsThenGoes)
{
    QDateTime now = QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC);
    ORVCache cache([&] { return now; });
    cache.cacheItemWithKeyValSecond(QStringLiteral("token"), QStringLiteral("abc"), 60);
    now = now.addSecs(59);
    EXPECT_EQ(cache.fetchItemWithKey(QStringLiteral("token")).toString(), QStringLiteral("abc"));
    now = now.addSecs(1);
    EXPECT_FALSE(cache.fetchItemWithKey(QStringLiteral("token")).isValid());
    now = now.addSecs(-30); // the expired entry was removed, not hidden
    EXPECT_FALSE(cache.fetchItemWithKey(QStringLiteral("token")).isValid());

    cache.cacheItemWithKeyValSecond(QStringLiteral("token"), 1, 10);
    cache.cacheItemWithKeyValSecond(QStringLiteral("token"), 2, 10); // a new value replaces the old
    EXPECT_EQ(cache.fetchItemWithKey(QStringLiteral("token")).toInt(), 2);
    EXPECT_FALSE(cache.fetchItemWithKey(QStringLiteral("other")).isValid());
}

TEST(NowDateUUID, IsTheTimeInTenThousandthsAndNeverRepeats)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch() * 10;
    const qint64 id = nowDateUUID();
    const qint64 after = QDateTime::currentMSecsSinceEpoch() * 10 + 10;
    EXPECT_GE(id, before);
    EXPECT_LE(id, after);

    QSet<qint64> ids;
    std::vector<qint64> a, b;
    std::thread t1([&] { for (int i = 0; i < 5000; ++i) a.push_back(nowDateUUID()); });
    std::thread t2([&] { for (int i = 0; i < 5000; ++i) b.push_back(nowDateUUID()); });
    t1.join();
    t2.join();
    for (size_t i = 1; i < a.size(); ++i)
        ASSERT_LT(a[i - 1], a[i]);
    for (qint64 v : a)
        ids.insert(v);
    for (qint64 v : b)
        ids.insert(v);
    EXPECT_EQ(ids.size(), 10000);
}

TEST(ApplicationLog, StartsWithItsTitleLineAndAppendsOneLinePerEntry)
{
    QTemporaryDir dir;
    ASSERT_TRUE(writeLogStringToLogFile(QStringLiteral("orvo-log.txt"), QStringLiteral("first"), dir.path()));
    ASSERT_TRUE(writeLogStringToLogFile(QStringLiteral("orvo-log.txt"), QStringLiteral("zweite Zeile ü"), dir.path()));
    EXPECT_EQ(orvotest::readFile(dir.filePath(QStringLiteral("orvo-log.txt"))),
              QByteArray("Orvo log\nfirst\nzweite Zeile \xc3\xbc\n"));

    ASSERT_TRUE(writeApplicationLogWithLogString(QStringLiteral("in the caches folder")));
    const QByteArray log = orvotest::readFile(qEnvironmentVariable("XDG_CACHE_HOME") + QStringLiteral("/Orvo/orvo-log.txt"));
    EXPECT_TRUE(log.startsWith("Orvo log\n"));
    EXPECT_TRUE(log.endsWith("in the caches folder\n"));
}

TEST(AES128, MatchesTheStandardVectorAndPadsWithPKCS7)
{
    // FIPS-197 / SP 800-38A, ECB-AES128, block 1.
    const QByteArray key = QByteArray::fromHex("2b7e151628aed2a6abf7158809cf4f3c");
    const QByteArray plain = QByteArray::fromHex("6bc1bee22e409f96e93d7e117393172a");
    const std::optional<QByteArray> sealed = AES128EncryptedDataWithKey(plain, key);
    ASSERT_TRUE(sealed);
    ASSERT_EQ(sealed->size(), 32); // a whole block of padding follows a whole block
    EXPECT_EQ(sealed->left(16).toHex(), QByteArray("3ad77bb40d7a3660a89ecaf32466ef97"));
    EXPECT_EQ(AES128DecryptedDataWithKey(*sealed, key).value_or(QByteArray()), plain);

    for (int n = 0; n <= 33; ++n) {
        const QByteArray data(n, char('a' + n % 26));
        const auto s = AES128EncryptedDataWithKey(data, "k");
        ASSERT_TRUE(s);
        EXPECT_EQ(s->size(), (n / 16 + 1) * 16);
        EXPECT_EQ(AES128DecryptedDataWithKey(*s, "k").value_or(QByteArray("x")), data);
    }
}

TEST(AES128, TheKeyTextIsZeroPaddedOrCutToSixteenBytes)
{
    const QByteArray data("settings");
    EXPECT_EQ(AES128EncryptedDataWithKey(data, "abc"), AES128EncryptedDataWithKey(data, QByteArray("abc\0\0\0", 6)));
    EXPECT_EQ(AES128EncryptedDataWithKey(data, "0123456789abcdefXYZ"), AES128EncryptedDataWithKey(data, "0123456789abcdef"));
    EXPECT_NE(AES128EncryptedDataWithKey(data, "0123456789abcdeX"), AES128EncryptedDataWithKey(data, "0123456789abcdef"));

    const QByteArray sealed = *AES128EncryptedDataWithKey(QByteArray(100, 'x'), "right key");
    const auto wrong = AES128DecryptedDataWithKey(sealed, "wrong key");
    EXPECT_TRUE(!wrong || *wrong != QByteArray(100, 'x'));
    EXPECT_FALSE(AES128DecryptedDataWithKey(sealed.left(sealed.size() - 1), "right key"));
    EXPECT_FALSE(AES128DecryptedDataWithKey(QByteArray(), "right key"));
}

TEST(JsonArchive, KeepsTheTypesJSONLacks)
{
    const QDateTime when = QDateTime::fromMSecsSinceEpoch(1700000000123, Qt::UTC);
    const QVariantMap root{
        {QStringLiteral("bytes"), QByteArray("\x00\xff raw", 6)},
        {QStringLiteral("date"), when},
        {QStringLiteral("id"), qint64(17000000001234)},
        {QStringLiteral("ratio"), 0.5},
        {QStringLiteral("flag"), true},
        {QStringLiteral("none"), QVariant()},
        {QStringLiteral("list"), QVariantList{QStringLiteral("a"), QVariantMap{{QStringLiteral("n"), qint64(1)}}}},
    };
    const std::optional<QVariant> back = unarchiveObjectWithData(archivedDataWithRootObject(root));
    ASSERT_TRUE(back);
    const QVariantMap m = back->toMap();
    EXPECT_EQ(m.value(QStringLiteral("bytes")).toByteArray(), QByteArray("\x00\xff raw", 6));
    EXPECT_EQ(m.value(QStringLiteral("date")).toDateTime(), when);
    EXPECT_EQ(m.value(QStringLiteral("id")).typeId(), QMetaType::LongLong);
    EXPECT_EQ(m.value(QStringLiteral("id")).toLongLong(), 17000000001234);
    EXPECT_DOUBLE_EQ(m.value(QStringLiteral("ratio")).toDouble(), 0.5);
    EXPECT_EQ(m.value(QStringLiteral("flag")).typeId(), QMetaType::Bool);
    EXPECT_FALSE(m.value(QStringLiteral("none")).isValid());
    EXPECT_EQ(m.value(QStringLiteral("list")).toList().at(1).toMap().value(QStringLiteral("n")).toLongLong(), 1);

    EXPECT_FALSE(unarchiveObjectWithData("not json"));
    EXPECT_FALSE(unarchiveObjectWithData(QByteArray()));
}

TEST(ORVBookmark, HoldsAPathAndResolvesOnlyWhatExists)
{
    QTemporaryDir dir;
    const QByteArray b = ORVBookmark::bookmarkDataWithPath(dir.path() + QStringLiteral("/./sub/.."));
    EXPECT_EQ(ORVBookmark::resolveBookmarkData(b).value_or(QString()), dir.path());
    const QByteArray gone = ORVBookmark::bookmarkDataWithPath(dir.filePath(QStringLiteral("gone")));
    EXPECT_FALSE(ORVBookmark::resolveBookmarkData(gone));
    EXPECT_EQ(ORVBookmark::pathInBookmarkData(gone).value_or(QString()), dir.filePath(QStringLiteral("gone")));
    EXPECT_FALSE(ORVBookmark::resolveBookmarkData(dir.path().toUtf8())); // a bare path is not a bookmark
    EXPECT_TRUE(ORVBookmark::bookmarkDataWithPath(QString()).isEmpty());
}
