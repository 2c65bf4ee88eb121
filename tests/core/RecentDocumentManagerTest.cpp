#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QVariant doc(qint64 uuid) { return ORVLibraryRecentDocumentManager::itemWithLibNameUUID(QStringLiteral("main"), uuid); }

} // namespace

TEST(LibraryRecentDocuments, NewestFirstAndTheOldestLeavesAtTheLimit)
{
    QTemporaryDir dir;
    int posted = 0;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(kORVLibraryRecentDocumentManagerItemsDidChanged, &context,
                                                        [&](const ORVNotification &) { ++posted; });
    ORVLibraryRecentDocumentManager recent(dir.path());
    for (int i = 1; i <= ORVLibraryRecentDocumentManager::kMaximumItems + 1; ++i)
        recent.addItem(doc(i));
    EXPECT_EQ(recent.itemCount(), 350);
    EXPECT_EQ(recent.items().first(), doc(351));
    EXPECT_EQ(recent.items().last(), doc(2)); // 1 was pushed out
    EXPECT_EQ(posted, 351);

    recent.addItem(doc(100)); // present: moves to the front, no copy
    EXPECT_EQ(recent.itemCount(), 350);
    EXPECT_EQ(recent.items().first(), doc(100));
    EXPECT_EQ(recent.items().count(doc(100)), 1);

    ASSERT_TRUE(recent.saveItems());
    ORVLibraryRecentDocumentManager again(dir.path());
    EXPECT_EQ(again.items(), recent.items());
    again.addItem(doc(351)); // equal after a round trip through the file
    EXPECT_EQ(again.itemCount(), 350);

    ASSERT_TRUE(again.removeAllItems()); // written at once
    EXPECT_EQ(ORVLibraryRecentDocumentManager(dir.path()).itemCount(), 0);
}

TEST(LibraryRecentDocuments, SavingWritesOnlyAfterAChange)
{
    QTemporaryDir dir;
    ORVLibraryRecentDocumentManager recent(dir.path());
    ASSERT_TRUE(recent.saveItems());
    EXPECT_FALSE(QFileInfo::exists(recent.filePath()));
    recent.addItem(doc(1));
    ASSERT_TRUE(recent.saveItems());
    ASSERT_TRUE(QFile::remove(recent.filePath()));
    ASSERT_TRUE(recent.saveItems()); // nothing changed since: nothing written
    EXPECT_FALSE(QFileInfo::exists(recent.filePath()));
    EXPECT_TRUE(recent.removeItem(doc(1)));
    EXPECT_FALSE(recent.removeItem(doc(1)));
    ASSERT_TRUE(recent.saveItems());
    EXPECT_TRUE(QFileInfo::exists(recent.filePath()));
}

TEST(ExternalRecentDocuments, NewestLastAndTheOldestLeavesAtTheLimit)
{
    QTemporaryDir dir;
    ORVExternalRecentDocumentManager recent(dir.path());
    for (int i = 1; i <= ORVExternalRecentDocumentManager::kMaximumItems + 1; ++i)
        recent.addItem(QStringLiteral("/notes/%1.md").arg(i));
    EXPECT_EQ(recent.itemCount(), 150);
    EXPECT_EQ(recent.items().first().toString(), QStringLiteral("/notes/2.md"));
    EXPECT_EQ(recent.items().last().toString(), QStringLiteral("/notes/151.md"));
    recent.addItem(QStringLiteral("/notes/2.md"));
    EXPECT_EQ(recent.items().last().toString(), QStringLiteral("/notes/2.md"));
    EXPECT_EQ(recent.items().first().toString(), QStringLiteral("/notes/3.md"));
    ASSERT_TRUE(recent.saveItems());
    EXPECT_EQ(ORVExternalRecentDocumentManager(dir.path()).items(), recent.items());
    EXPECT_TRUE(recent.filePath().endsWith(QStringLiteral("/externalRecentDocumentItems.data")));
}
