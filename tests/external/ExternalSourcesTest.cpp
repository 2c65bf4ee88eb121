#include "core/ORVBookmark.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/fileNames.h"
#include "library/supportedDocumentExt.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using orvotest::readFile;
using orvotest::writeFile;

namespace {

class SourceManager : public ::testing::Test
{
protected:
    QTemporaryDir tmp;
    QString store() const { return tmp.filePath(QStringLiteral("support/externalSourceItems.data")); }
    QString folder(const QString &name) const
    {
        QDir().mkpath(tmp.filePath(name));
        return tmp.filePath(name);
    }
    static QStringList paths(const ORVExternalSourceItemManager &m)
    {
        QStringList out;
        for (const auto &item : m.items())
            out << QFileInfo(item->realURL()).fileName();
        return out;
    }
};

} // namespace

TEST_F(SourceManager, ListEditsAndRoundTrip)
{
    int notifications = 0;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(kORVExternalSourceItemDidChangeNotification, &context,
                                                        [&](const ORVNotification &) { ++notifications; });
    ORVExternalSourceItemManager m(store());
    EXPECT_TRUE(m.items().isEmpty());
    ASSERT_TRUE(m.addItem(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("a")))));
    ASSERT_TRUE(m.addItem(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("b")))));
    ASSERT_TRUE(m.addItemAtIndex(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("c"))), 0));
    // The same folder by another spelling is refused.
    EXPECT_FALSE(m.addItem(ORVExternalSourceItem::itemWithFolderPath(tmp.filePath(QStringLiteral("b/../a/")))));
    EXPECT_EQ(paths(m), (QStringList{"c", "a", "b"}));
    EXPECT_TRUE(m.moveItemMoveTo(0, 2));
    EXPECT_FALSE(m.moveItemMoveTo(0, 3));
    EXPECT_EQ(paths(m), (QStringList{"a", "b", "c"}));
    EXPECT_TRUE(m.removeItem(m.itemWithPath(folder(QStringLiteral("b")))));
    EXPECT_FALSE(m.removeItem(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("zz")))));
    EXPECT_GE(notifications, 5);

    ASSERT_TRUE(m.isDirty());
    QString error;
    ASSERT_TRUE(m.saveItems(&error)) << qPrintable(error);
    EXPECT_FALSE(m.isDirty());

    ORVExternalSourceItemManager again(store());
    EXPECT_EQ(paths(again), (QStringList{"a", "c"}));
    EXPECT_EQ(again.items().at(0)->bookmarkData(), m.items().at(0)->bookmarkData());
    EXPECT_EQ(again.items().at(0)->resolveBookmark(), folder(QStringLiteral("a")));
}

TEST_F(SourceManager, RearrangeDropsRepeatsAndFollowsBookmarks)
{
    ASSERT_TRUE(writeFile(store(), QStringLiteral(R"([
        {"realURL": "%1", "bookmarkData": ""},
        {"realURL": "%1", "bookmarkData": ""},
        {"realURL": "/old/place", "bookmarkData": "%2"},
        {"realURL": "", "bookmarkData": ""}
    ])").arg(folder(QStringLiteral("a")), QString::fromLatin1(ORVBookmark::bookmarkDataWithPath(folder(QStringLiteral("moved"))).toBase64())).toUtf8()));
    ORVExternalSourceItemManager m(store());
    EXPECT_EQ(m.items().size(), 3); // the empty entry is not even read
    m.rearrangeItems();
    EXPECT_EQ(paths(m), (QStringList{"a", "moved"}));
    EXPECT_TRUE(m.isDirty());
}

TEST_F(SourceManager, UnreadableListIsKeptAsideBeforeBeingReplaced)
{
    ASSERT_TRUE(writeFile(store(), "{ this is not a list"));
    ORVExternalSourceItemManager m(store());
    QString error;
    EXPECT_FALSE(m.fetchItems(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("externalSourceItems.data")));
    EXPECT_TRUE(m.items().isEmpty());
    ASSERT_TRUE(m.addItem(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("a")))));
    ASSERT_TRUE(m.saveItems(&error)) << qPrintable(error);
    EXPECT_EQ(readFile(store() + QStringLiteral(".unreadable")), QByteArray("{ this is not a list"));
    EXPECT_EQ(ORVExternalSourceItemManager(store()).items().size(), 1);
}

TEST_F(SourceManager, InMemoryListWritesNothing)
{
    ORVExternalSourceItemManager m{QString()};
    ASSERT_TRUE(m.addItem(ORVExternalSourceItem::itemWithFolderPath(folder(QStringLiteral("a")))));
    EXPECT_TRUE(m.saveItems());
    EXPECT_EQ(QDir(tmp.path()).entryList(QDir::Files).size(), 0);
}

TEST(SupportedDocuments, ExtensionsInOrderAndCaseInsensitive)
{
    EXPECT_EQ(supportedDocumentExt(),
              (QStringList{"md", "markdown", "txt", "text", "mdown", "mkd", "rmd", "mkdn", "mdwn", "mdtxt", "mdtext",
                           "taskpaper", "fountain", "rst"}));
    EXPECT_TRUE(checkIsSupportedDocumentWithPath(QStringLiteral("/a/Notes.MD")));
    EXPECT_TRUE(checkIsSupportedDocumentWithPath(QStringLiteral("x.tar.Fountain")));
    EXPECT_FALSE(checkIsSupportedDocumentWithPath(QStringLiteral("a.mdx")));
    EXPECT_FALSE(checkIsSupportedDocumentWithPath(QStringLiteral("md")));
    EXPECT_FALSE(checkIsSupportedDocumentWithPath(QStringLiteral("/notes.md/readme"))); // the folder's extension does not count
    EXPECT_FALSE(checkIsSupportedDocumentWithPath(QStringLiteral(".md")));               // a hidden file, no extension
}

TEST(FileNames, ExtensionIsAfterTheLastDotOfTheName)
{
    EXPECT_EQ(fileNameDeletingPathExtension(QStringLiteral("/x/a.tar.gz")), QStringLiteral("a.tar"));
    EXPECT_EQ(fileNameDeletingPathExtension(QStringLiteral("/x.d/readme")), QStringLiteral("readme"));
    EXPECT_EQ(fileNameDeletingPathExtension(QStringLiteral(".profile")), QStringLiteral(".profile"));
    EXPECT_EQ(fileNameDeletingPathExtension(QStringLiteral("notes.")), QStringLiteral("notes."));
    EXPECT_EQ(fileNameDeletingPathExtension(QStringLiteral("/x/my.notes/")), QStringLiteral("my"));
    EXPECT_EQ(pathExtension(QStringLiteral("a.tar.gz")), QStringLiteral("gz"));
    EXPECT_EQ(pathExtension(QStringLiteral("a")), QString());
}
