// New documents, final deletion, import with its link rewriting, export,
// link text, and the scan for images no document refers to.
#include "LibraryFixture.h"

#include "library/ORVLibraryDocuments.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVUnReferenceImagesScanner.h"

#include <QDirIterator>
#include <QFileInfo>

namespace {

class Documents : public LibraryFixture
{
protected:
    ORVLibraryDocuments documents() { return ORVLibraryDocuments(manager, lib); }

    // A folder of files to import, outside the library.
    QString source(const QString &relative, const QByteArray &content)
    {
        const QString path = dir.filePath(QStringLiteral("src/") + relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        EXPECT_TRUE(orvotest::writeFile(path, content));
        return path;
    }
    QByteArray text(qint64 uuid) { return orvotest::readFile(docPath(uuid)); }

    // Every file in the user's trash, by content.
    QList<QByteArray> trashed()
    {
        QList<QByteArray> contents;
        QDirIterator it(trashFiles(), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            contents << orvotest::readFile(it.next());
        return contents;
    }
};

} // namespace

TEST_F(Documents, ANewDocumentGoesIntoItsPlaceAndStartsWithAHeadingMark)
{
    const ORVDBCat cat = addCat(QStringLiteral("C"));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(addDoc("# tagged"), {QStringLiteral("t")}));
    const qint64 tagID = manager->getAllItemsTagsCatTreeItem().first()->uuid;
    ORVCatTreeItem inCat, onTag, onInbox, onTrash;
    inCat.catType = ORVCatType::TopCategory;
    inCat.uuid = cat.uuid();
    onTag.catType = ORVCatType::Tag;
    onTag.uuid = tagID;
    onInbox.catType = onInbox.uuid = ORVCatType::Inbox;
    onTrash.catType = onTrash.uuid = ORVCatType::Trash;

    const auto a = documents().newDocument(&inCat);
    ASSERT_TRUE(a);
    EXPECT_EQ(text(a->uuid()), QByteArray("# "));
    EXPECT_EQ(a->sort(), a->uuid());
    EXPECT_EQ(a->dateModif(), a->dateAdd());
    EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(a->uuid()), QList<qint64>({cat.uuid()}));

    const auto b = documents().newDocument(&onTag, QStringLiteral("Titled"));
    ASSERT_TRUE(b);
    EXPECT_EQ(text(b->uuid()), QByteArray("# Titled\n"));
    EXPECT_EQ(manager->articleTagsNamesByArticleUUID(b->uuid()), QStringList({"t"}));
    EXPECT_TRUE(manager->articleCatsIIDSByArticleUUID(b->uuid()).isEmpty());

    for (const ORVCatTreeItem *place : {static_cast<const ORVCatTreeItem *>(&onInbox), static_cast<const ORVCatTreeItem *>(&onTrash), static_cast<const ORVCatTreeItem *>(nullptr)}) {
        const auto c = documents().newDocument(place);
        ASSERT_TRUE(c);
        EXPECT_EQ(manager->itemDBArticleWithUUID(c->uuid())->state(), ORVDBArticle::StateNormal);
        EXPECT_TRUE(manager->articleCatsIIDSByArticleUUID(c->uuid()).isEmpty());
    }
}

TEST_F(Documents, OnlyTrashedDocumentsAreDeletedAndTheirFilesGoToTheUsersTrash)
{
    const ORVDBCat cat = addCat(QStringLiteral("C"));
    const ORVDBArticle normal = addDoc("# normal doc", {cat.uuid()});
    const ORVDBArticle gone = addDoc("# trashed doc", {cat.uuid()}, 1700000000, 1700000000, ORVDBArticle::StateTrash);
    const ORVDBArticle fileless = addDoc("# no file", {}, 1700000000, 1700000000, ORVDBArticle::StateTrash);
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(gone, {QStringLiteral("t")}));
    const QString media = docs() + QStringLiteral("/media/%1").arg(gone.uuid());
    ASSERT_TRUE(QDir().mkpath(media));
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/pic.png"), "PNGDATA"));
    ASSERT_TRUE(QFile::remove(docPath(fileless.uuid())));

    const auto result = documents().deleteDBArticlesWithArray({normal, gone, fileless});
    EXPECT_EQ(result.deleted, QList<qint64>({gone.uuid(), fileless.uuid()}));
    EXPECT_EQ(result.notInTrash, QList<qint64>({normal.uuid()}));
    EXPECT_TRUE(result.errors.isEmpty());
    // The normal one: untouched, file and row and links.
    EXPECT_TRUE(QFileInfo::exists(docPath(normal.uuid())));
    EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(normal.uuid()), QList<qint64>({cat.uuid()}));
    // The trashed one: file and media in the user's trash, row and links gone.
    EXPECT_FALSE(QFileInfo::exists(docPath(gone.uuid())));
    EXPECT_FALSE(QFileInfo::exists(media));
    EXPECT_TRUE(trashed().contains("# trashed doc"));
    EXPECT_TRUE(trashed().contains("PNGDATA"));
    EXPECT_FALSE(manager->itemDBArticleWithUUID(gone.uuid()));
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM cat_article WHERE aid=?"), {gone.uuid()}).toInt(), 0);
    EXPECT_EQ(scalar(QStringLiteral("SELECT COUNT(*) FROM tag_article WHERE aid=?"), {gone.uuid()}).toInt(), 0);
    EXPECT_FALSE(manager->itemDBArticleWithUUID(fileless.uuid()));
}

TEST_F(Documents, EmptyingTheTrashDeletesAllOfItThroughTheList)
{
    addDoc("# keep");
    addDoc("# one", {}, 1700000000, 1700000000, ORVDBArticle::StateTrash);
    addDoc("# two", {}, 1700000000, 1700000000, ORVDBArticle::StateTrash);
    ORVLibraryListController list(manager, lib, nullptr, nullptr);
    list.fetchAndReloadListDataByCatUUID(ORVCatType::Trash);
    ASSERT_EQ(list.listContent.size(), 2);
    EXPECT_EQ(list.emptyTrashAction().size(), 2);
    EXPECT_TRUE(list.listContent.isEmpty());
    EXPECT_EQ(manager->getTrashItemsDBArticleCount(), 0);
    EXPECT_EQ(manager->getAllItemsDBArticleCount(), 1);

    // Trash and put back through the list: rows leave the list shown.
    list.fetchAndReloadListDataByCatUUID(ORVCatType::Inbox);
    EXPECT_EQ(list.moveToTrashAction(list.listContent).size(), 1);
    EXPECT_TRUE(list.listContent.isEmpty());
    list.fetchAndReloadListDataByCatUUID(ORVCatType::Trash);
    EXPECT_EQ(list.putBackAction(list.listContent).size(), 1);
    EXPECT_EQ(manager->getAllItemsDBArticleCount(), 1);
}

TEST_F(Documents, ImportRewritesLinksToFilesThatExistAndCopiesThem)
{
    const ORVDBCat cat = addCat(QStringLiteral("C"));
    source(QStringLiteral("folder/img/sub/deep.png"), "DEEP");
    source(QStringLiteral("folder/img/a b.png"), "SPACE");
    source(QStringLiteral("folder/other/deep.png"), "SECOND");
    source(QStringLiteral("folder/notes.pdf"), "PDF");
    const QString md = source(QStringLiteral("folder/post.md"),
                              "# Post\n"
                              "![one](img/sub/deep.png \"A title\")\n"
                              "![web](https://example.com/x.png) [mail](http://example.com)\n"
                              "![missing](img/nothing.png)\n"
                              "[pdf](notes.pdf) ![enc](img/a%20b.png) ![same name](other/deep.png)\n"
                              "[](img/sub/deep.png)\n");
    source(QStringLiteral("folder/.hidden.md"), "# hidden");
    source(QStringLiteral("folder/README.MD"), "# upper case extension");
    source(QStringLiteral("folder/plain.txt"), "plain text");
    source(QStringLiteral("folder/inner/nested.md"), "# nested");

    const auto result = documents().importToLibrary({dir.filePath(QStringLiteral("src/folder"))}, cat.uuid());
    ASSERT_EQ(result.imported.size(), 2); // post.md and plain.txt
    const auto post = std::find_if(result.imported.begin(), result.imported.end(), [&](const ORVDBArticle &a) {
        return text(a.uuid()).startsWith("# Post");
    });
    ASSERT_NE(post, result.imported.end());
    const qint64 id = post->uuid();
    const QString m = QStringLiteral("media/%1/").arg(id);
    EXPECT_EQ(QString::fromUtf8(text(id)),
              QStringLiteral("# Post\n"
                             "![one](%1deep.png)\n"
                             "![web](https://example.com/x.png) [mail](http://example.com)\n"
                             "![missing](img/nothing.png)\n"
                             "[pdf](%1notes.pdf) ![enc](%1a%20b.png) ![same name](%1deep.png)\n"
                             "[](%1deep.png)\n")
                  .arg(m));
    // Flattened into the media folder; of two files with one name the first copy wins.
    EXPECT_EQ(orvotest::readFile(docs() + QLatin1Char('/') + m + QStringLiteral("deep.png")), QByteArray("DEEP"));
    EXPECT_EQ(orvotest::readFile(docs() + QLatin1Char('/') + m + QStringLiteral("a b.png")), QByteArray("SPACE"));
    EXPECT_EQ(orvotest::readFile(docs() + QLatin1Char('/') + m + QStringLiteral("notes.pdf")), QByteArray("PDF"));
    for (const ORVDBArticle &a : result.imported) {
        EXPECT_EQ(manager->articleCatsIIDSByArticleUUID(a.uuid()), QList<qint64>({cat.uuid()}));
        EXPECT_EQ(a.dateModif(), a.dateAdd());
    }

    // A file chosen by itself keeps its links as they are.
    const auto single = documents().importToLibrary({md}, 0);
    ASSERT_EQ(single.imported.size(), 1);
    EXPECT_EQ(text(single.imported.first().uuid()), orvotest::readFile(md));
    EXPECT_TRUE(manager->articleCatsIIDSByArticleUUID(single.imported.first().uuid()).isEmpty());
}

TEST_F(Documents, AnImportOfNothingImportableImportsNothing)
{
    source(QStringLiteral("empty/inner/deep.md"), "# only in a subfolder");
    source(QStringLiteral("empty/picture.png"), "PNG");
    const qint64 before = manager->getAllItemsDBArticleCount();
    const auto result = documents().importToLibrary(
        {dir.filePath(QStringLiteral("src/empty")), dir.filePath(QStringLiteral("src/missing.md")),
         dir.filePath(QStringLiteral("src/empty/picture.png"))},
        0);
    EXPECT_TRUE(result.isNothingImported());
    EXPECT_EQ(result.skipped.size(), 2);
    EXPECT_EQ(manager->getAllItemsDBArticleCount(), before);
    EXPECT_EQ(QDir(docs()).entryList(QDir::Files).size(), 0);
    EXPECT_EQ(ORVLibraryDocuments::importNothingMessage(),
              QStringLiteral("Can't import file, please make sure you choose's folder contain .txt, .md or .markdown file!"));
}

TEST_F(Documents, ExportNamesFilesAfterTitlesNumbersClashesAndTakesTheMedia)
{
    const ORVDBArticle a = addDoc("# Same\nfirst");
    const ORVDBArticle b = addDoc("## Same\nsecond");
    const ORVDBArticle c = addDoc("\nno title");
    const ORVDBArticle d = addDoc("# Either/Or\n");
    const QString media = docs() + QStringLiteral("/media/%1").arg(a.uuid());
    ASSERT_TRUE(QDir().mkpath(media + QStringLiteral("/sub")));
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/pic.png"), "PIC"));
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/sub/deep.png"), "DEEP"));
    ORVDBArticle withOther = b;
    ASSERT_TRUE(QDir().mkpath(docs() + QStringLiteral("/shared")));
    ASSERT_TRUE(orvotest::writeFile(docs() + QStringLiteral("/shared/logo.svg"), "SVG"));
    withOther.setOtherMediaPaths({QStringLiteral("shared/logo.svg"), QStringLiteral("../../etc/passwd")});

    const QString out = dir.filePath(QStringLiteral("out"));
    ASSERT_TRUE(QDir().mkpath(out));
    ASSERT_TRUE(orvotest::writeFile(out + QStringLiteral("/Same.md"), "already here"));
    QList<ORVLibraryListDataItem> rows;
    rows << ORVLibraryListDataItem::groupItemWithTitle(QStringLiteral("group"), 1);
    for (const ORVDBArticle &art : {a, withOther, c, d})
        rows << ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(art, {}, {}, lib);
    const auto result = documents().exportDocumentsToMarkdown(rows, out);
    EXPECT_TRUE(result.failed.isEmpty());
    EXPECT_EQ(result.written.size(), 4);
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/Same.md")), QByteArray("already here"));
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/Same-1.md")), QByteArray("# Same\nfirst"));
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/Same-2.md")), QByteArray("## Same\nsecond"));
    EXPECT_TRUE(QFileInfo::exists(out + QStringLiteral("/%1.md").arg(c.uuid())));
    EXPECT_TRUE(QFileInfo::exists(out + QStringLiteral("/Either-Or.md")));
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/media/%1/pic.png").arg(a.uuid())), QByteArray("PIC"));
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/media/%1/sub/deep.png").arg(a.uuid())), QByteArray("DEEP"));
    EXPECT_EQ(orvotest::readFile(out + QStringLiteral("/shared/logo.svg")), QByteArray("SVG"));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("etc"))));
    EXPECT_EQ(QDir(out).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList({"media", "shared"}));
}

TEST_F(Documents, TheLinkTextNamesEachDocumentByTitleAndID)
{
    const ORVDBArticle a = addDoc("# First one");
    const ORVDBArticle b = addDoc("second");
    QList<ORVLibraryListDataItem> rows{ORVLibraryListDataItem::groupItemWithTitle(QStringLiteral("g"), 5)};
    for (const ORVDBArticle &art : {a, b})
        rows << ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(art, {}, {}, lib);
    EXPECT_EQ(ORVLibraryListController::noteLinkTextWithItems(rows),
              QStringLiteral("[First one](orvolib://%1)\n[second](orvolib://%2)").arg(a.uuid()).arg(b.uuid()));
}

TEST_F(Documents, ImagesThatNoDocumentNamesAreFoundAndGoToTheTrash)
{
    const QString folder = dir.filePath(QStringLiteral("site"));
    const auto put = [&](const QString &relative, const QByteArray &content) {
        QDir().mkpath(QFileInfo(folder + QLatin1Char('/') + relative).absolutePath());
        EXPECT_TRUE(orvotest::writeFile(folder + QLatin1Char('/') + relative, content));
    };
    put(QStringLiteral("post.md"), "![](img/Used.PNG) and a mention of MENTIONED.jpg");
    put(QStringLiteral("notes/more.markdown"), "![](../my%20photo.webp)");
    put(QStringLiteral("img/used.png"), "x");        // named in another case
    put(QStringLiteral("mentioned.jpg"), "x");       // merely mentioned
    put(QStringLiteral("my photo.webp"), "x");       // named percent-encoded
    put(QStringLiteral("other/used.png"), "x");      // protected by its namesake
    put(QStringLiteral("img/orphan.gif"), "x");
    put(QStringLiteral("deep/er/lost.svg"), "x");
    put(QStringLiteral(".cache/hidden.png"), "x");   // hidden: left out
    put(QStringLiteral("data.json"), "orphan.gif");   // not a document: no reference

    const QList<ORVLibraryMediaItem> items = ORVUnReferenceImagesScanner::scanFolder(folder);
    QStringList names;
    for (const ORVLibraryMediaItem &item : items) {
        names << item.fileName;
        EXPECT_TRUE(item.isPicture);
        EXPECT_FALSE(item.isInDoc);
        EXPECT_EQ(item.fileSize, 1);
        EXPECT_GT(item.systemFileNumber, 0u);
    }
    EXPECT_EQ(names, QStringList({"deep/er/lost.svg", "img/orphan.gif"}));

    QStringList errors;
    EXPECT_EQ(ORVUnReferenceImagesScanner::moveItemsToTrash(items, &errors).size(), 2);
    EXPECT_TRUE(errors.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(folder + QStringLiteral("/img/orphan.gif")));
    EXPECT_TRUE(ORVUnReferenceImagesScanner::scanFolder(folder).isEmpty());
}
