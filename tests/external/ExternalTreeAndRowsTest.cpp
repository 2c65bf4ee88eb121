#include "library/ORVExternalListDataItem.h"
#include "library/ORVExternalTree.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using orvotest::writeFile;

namespace {

QStringList childNames(const ORVExternalCategoryItem *item)
{
    QStringList names;
    for (const auto &c : item->children)
        names << c->name;
    return names;
}

bool setModified(const QString &path, const QDateTime &when)
{
    QFile f(path);
    return f.open(QIODevice::ReadWrite) && f.setFileTime(when, QFileDevice::FileModificationTime);
}

} // namespace

TEST(ExternalListRows, ContentTitleAndAttributes)
{
    QTemporaryDir tmp;
    const QString p = tmp.filePath(QStringLiteral("Week 1.draft.md"));
    const QByteArray bytes = "# Monday\r\n\r\nWrote a lot.\nline 4\nline 5\nline 6\n";
    ASSERT_TRUE(writeFile(p, bytes));
    const auto row = ORVExternalListDataItem::itemWithRealPath(p);
    EXPECT_EQ(row->title(), QStringLiteral("Week 1.draft"));
    EXPECT_EQ(row->fileName, QStringLiteral("Week 1.draft.md"));
    // Five lines, every line end a space, "\r\n" as well as "\n".
    EXPECT_EQ(row->content, QStringLiteral("# Monday  Wrote a lot. line 4 line 5 "));
    // Reading stops as soon as the text is longer than 200 characters, so
    // the line that crosses the limit is whole; a line that is not UTF-8 is
    // left out.
    ASSERT_TRUE(writeFile(p, QByteArray(150, 'a') + "\ncaf\xE9\n" + QByteArray(100, 'b') + "\nnever\n"));
    EXPECT_EQ(ORVExternalListDataItem::itemWithRealPath(p)->content, QString(150, 'a') + ' ' + QString(100, 'b') + ' ');
    ASSERT_TRUE(writeFile(p, bytes));
    EXPECT_EQ(row->fileSize, bytes.size());
    EXPECT_TRUE(row->creationDate.isValid());
    EXPECT_TRUE(row->modificationDate.isValid());
    const auto bare = ORVExternalListDataItem::initNoContentWithRealPath(p);
    EXPECT_TRUE(bare->content.isEmpty());
    EXPECT_EQ(bare->fileSize, bytes.size());
    EXPECT_TRUE(*bare == *row);
}

TEST(ExternalListRows, FolderListsOnlyDocumentsInEachOrder)
{
    QTemporaryDir tmp;
    const QString d = tmp.path();
    const QDateTime t0 = QDateTime::currentDateTimeUtc().addDays(-10);
    const QStringList names{"Chapter 10.md", "chapter 2.md", "Chapter 1.txt"};
    for (int i = 0; i < names.size(); ++i) {
        ASSERT_TRUE(writeFile(d + '/' + names[i], "x"));
        ASSERT_TRUE(setModified(d + '/' + names[i], t0.addSecs(3600 * (i == 0 ? 3 : i))));
    }
    ASSERT_TRUE(writeFile(d + "/image.png", "x"));
    ASSERT_TRUE(writeFile(d + "/.hidden.md", "x"));
    ASSERT_TRUE(QDir().mkpath(d + "/sub.md"));
    const auto titles = [&](qint64 order) {
        QStringList out;
        for (const auto &row : ORVExternalListDataItem::listDataItemsInFolder(d, order, false))
            out << row->title();
        return out;
    };
    EXPECT_EQ(titles(3), (QStringList{"Chapter 1", "chapter 2", "Chapter 10"})); // numbers by value, case ignored
    EXPECT_EQ(titles(4), (QStringList{"Chapter 10", "chapter 2", "Chapter 1"}));
    EXPECT_EQ(titles(2), titles(3));
    EXPECT_EQ(titles(5), (QStringList{"Chapter 10", "Chapter 1", "chapter 2"}));
    EXPECT_EQ(titles(6), (QStringList{"chapter 2", "Chapter 1", "Chapter 10"}));
}

TEST(ListDataItem, SortTitlePadsNumbers)
{
    EXPECT_EQ(ORVListDataItem::stringByWellToDigitSortString(QStringLiteral("a1b0c22")), QStringLiteral("a00000001b0c00000022"));
    EXPECT_EQ(ORVListDataItem::stringByWellToDigitSortString(QStringLiteral("v007")), QStringLiteral("v00000007"));
    EXPECT_EQ(ORVListDataItem::stringByWellToDigitSortString(QStringLiteral("123456789012")), QStringLiteral("123456789012"));
    // Seven runs are padded, the eighth stays.
    EXPECT_EQ(ORVListDataItem::stringByWellToDigitSortString(QStringLiteral("1.2.3.4.5.6.7.8")),
              QStringLiteral("00000001.00000002.00000003.00000004.00000005.00000006.00000007.8"));
    ORVListDataItem row;
    row.setTitle(QStringLiteral("x9"));
    EXPECT_EQ(row.forSortTitle(), QStringLiteral("x00000009"));
    row.setTitle(QStringLiteral("x10"));
    EXPECT_EQ(row.forSortTitle(), QStringLiteral("x00000010"));
}

class ExternalTreeTest : public ::testing::Test
{
protected:
    QTemporaryDir tmp;
    QString src;
    ORVExternalTree tree;
    std::shared_ptr<ORVExternalSourceItem> source;

    void SetUp() override
    {
        src = tmp.filePath(QStringLiteral("notes"));
        for (const char *f : {"a.md", "b.txt", "skip.png", "Chapter 10/x.md", "Chapter 2/y.md", "Chapter 2/z.md",
                              "chapter 1/deep/w.md", ".git/objects/o.md", "media/pic.png"})
            ASSERT_TRUE(writeFile(src + '/' + QString::fromLatin1(f), "x"));
        ASSERT_TRUE(QFile::link(src + "/Chapter 2", src + "/link to chapter 2"));
        ASSERT_TRUE(QFile::link(src + "/a.md", src + "/linked.md"));
        source = ORVExternalSourceItem::itemWithFolderPath(src);
        tree.updateExternalTreeDataTopItems({source});
    }
    ORVExternalCategoryItem *entry() const { return tree.foldersRootItem()->children.at(0).get(); }
};

TEST_F(ExternalTreeTest, BuildsFoldersWithCountsInNaturalOrder)
{
    ASSERT_EQ(tree.topItems().size(), 1);
    EXPECT_EQ(tree.foldersRootItem()->catType, 1);
    ORVExternalCategoryItem *e = entry();
    EXPECT_EQ(e->name, QStringLiteral("notes"));
    EXPECT_EQ(e->catType, 50);
    EXPECT_EQ(e->itemCount, 3); // a.md, b.txt and the link to a file
    // Hidden folders and links to folders are left out; numbers by value.
    EXPECT_EQ(childNames(e), (QStringList{"chapter 1", "Chapter 2", "Chapter 10", "media"}));
    EXPECT_EQ(e->childFolderWithName(QStringLiteral("Chapter 2"))->itemCount, 2);
    EXPECT_EQ(tree.folderItemForPath(src + "/chapter 1/deep")->itemCount, 1);
    EXPECT_EQ(tree.folderItemForPath(src + "/chapter 1/deep")->settingData(), source->settingData());
    EXPECT_EQ(tree.folderItemForPath(src + "/nope"), nullptr);
    EXPECT_EQ(tree.sourceEntryContainingPath(src + "/chapter 1/deep/w.md").get(), e);
    EXPECT_EQ(tree.sourceEntryContainingPath(src + "2/other.md"), nullptr); // a prefix is not a folder
}

TEST_F(ExternalTreeTest, PatchesAfterChangedPaths)
{
    ORVExternalCategoryItem *e = entry();
    const auto kept = e->childFolderWithName(QStringLiteral("Chapter 10"));
    // A new folder with content, a removed one, a new document.
    ASSERT_TRUE(writeFile(src + "/New/inner/n.md", "x"));
    ASSERT_TRUE(QDir(src + "/chapter 1").removeRecursively());
    ASSERT_TRUE(writeFile(src + "/c.md", "x"));
    EXPECT_TRUE(tree.updateWithChangedPaths({src + "/New", src + "/New/inner", src + "/New/inner/n.md",
                                             src + "/chapter 1", src + "/chapter 1/deep", src + "/c.md"}));
    EXPECT_EQ(childNames(e), (QStringList{"Chapter 2", "Chapter 10", "media", "New"}));
    EXPECT_EQ(e->itemCount, 4);
    EXPECT_EQ(tree.folderItemForPath(src + "/New/inner")->itemCount, 1);
    EXPECT_EQ(e->childFolderWithName(QStringLiteral("Chapter 10")), kept); // untouched entries stay
    EXPECT_FALSE(tree.updateWithChangedPaths({src + "/Chapter 10/x.md"}));  // a content change alters nothing

    // The source folder goes: its entry stays, empty and missing; it comes back whole.
    const QString away = tmp.filePath(QStringLiteral("away"));
    ASSERT_TRUE(QDir().rename(src, away));
    EXPECT_TRUE(tree.updateWithChangedPaths({src}));
    EXPECT_EQ(entry(), e);
    EXPECT_TRUE(e->isMissing);
    EXPECT_TRUE(e->children.isEmpty());
    ASSERT_TRUE(QDir().rename(away, src));
    EXPECT_TRUE(tree.updateWithChangedPaths({src}));
    EXPECT_FALSE(e->isMissing);
    EXPECT_EQ(childNames(e).size(), 4);
}

TEST_F(ExternalTreeTest, SourceListChangesKeepEntriesThatStay)
{
    const ORVExternalCategoryItem *before = entry();
    const QString other = tmp.filePath(QStringLiteral("other"));
    ASSERT_TRUE(QDir().mkpath(other));
    const auto second = ORVExternalSourceItem::itemWithFolderPath(other);
    tree.updateExternalTreeDataTopItems({second, source});
    ASSERT_EQ(tree.foldersRootItem()->children.size(), 2);
    EXPECT_EQ(tree.foldersRootItem()->children.at(1).get(), before);
    EXPECT_EQ(tree.foldersRootItem()->children.at(0)->fullPath, other);
    tree.updateExternalTreeDataTopItems({second});
    EXPECT_EQ(tree.foldersRootItem()->children.size(), 1);
    EXPECT_EQ(tree.sourceEntryContainingPath(src + "/a.md"), nullptr);
}
