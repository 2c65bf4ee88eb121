#include "DocumentTestSupport.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "library/ORVDBManager.h"
#include "library/ORVExternalSourceItemManager.h"
#include "library/ORVExternalTree.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QDateTime>
#include <QFileInfo>

using orvotest::readFile;
using orvotest::writeFile;

namespace {

class LibraryDocument : public DocumentTest
{
protected:
    QString lib;
    QString docs;
    qint64 uuid = 0;

    void SetUp() override
    {
        DocumentTest::SetUp();
        lib = path(QStringLiteral("Library"));
        ASSERT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(lib, QStringLiteral("# Welcome")));
        lib = QFileInfo(lib).canonicalFilePath();
        ASSERT_TRUE(app->setLibraryModeMainURL(lib));
        docs = lib + QStringLiteral("/docs");
        const auto all = app->libraryModeMainDBManager()->getAllItemsDBArticleWithSort(0);
        ASSERT_EQ(all.size(), 1);
        uuid = all.at(0).uuid();
    }
    QString docPath(qint64 id) const { return docs + QStringLiteral("/%1.md").arg(id); }
    ORVDBArticle row() const { return *app->libraryModeMainDBManager()->itemDBArticleWithUUID(uuid); }
};

} // namespace

TEST_F(LibraryDocument, FileNumbersAndIdsHaveTheirOwnLimits)
{
    auto doc = open(docPath(uuid));
    EXPECT_TRUE(doc->isLibraryDocument());
    EXPECT_EQ(doc->libraryURL(), lib);
    EXPECT_EQ(doc->libraryDocumentUUID(), uuid);
    EXPECT_EQ(app->libraryRecentDocumentManager()->items().value(0).toMap(),
              ORVLibraryRecentDocumentManager::itemWithLibNameUUID(QStringLiteral("main"), uuid));
    EXPECT_EQ(doc->encodeRestorableState(),
              (QVariantMap{{QStringLiteral("libURL"), lib}, {QStringLiteral("libDocUUID"), uuid}}));

    // 12345 is below the file number limit: not taken for a library file.
    ASSERT_TRUE(writeFile(docs + "/12345.md", "x"));
    EXPECT_TRUE(open(docs + "/12345.md")->libraryURL().isEmpty());
    // A big number outside any library is an ordinary file.
    ASSERT_TRUE(writeFile(path(QStringLiteral("elsewhere/20190101.md")), "x"));
    auto outside = open(path(QStringLiteral("elsewhere/20190101.md")));
    EXPECT_FALSE(outside->isLibraryDocument());
    EXPECT_TRUE(outside->libraryURL().isEmpty());
    // Restored state: the id limit alone decides.
    ORVDocument restored(app.get());
    restored.restoreDocumentWindowWithState({{QStringLiteral("libURL"), lib}, {QStringLiteral("libDocUUID"), 10000}});
    EXPECT_TRUE(restored.isLibraryDocument());
    restored.restoreDocumentWindowWithState({{QStringLiteral("libURL"), lib}, {QStringLiteral("libDocUUID"), 9999}});
    EXPECT_FALSE(restored.isLibraryDocument());
}

TEST_F(LibraryDocument, TitlesComeFromTheText)
{
    auto doc = open(docPath(uuid));
    const auto titleOf = [&](const QString &text) {
        doc->textStorage()->setString(text);
        return doc->documentTitleRemoveMark();
    };
    EXPECT_EQ(titleOf(QStringLiteral("### \nbody")), QStringLiteral("Untitled"));
    EXPECT_EQ(titleOf(QStringLiteral("#title")), QStringLiteral("title"));
    EXPECT_EQ(titleOf(QStringLiteral("# title\nbody")), QStringLiteral("title"));
    EXPECT_EQ(titleOf(QString()), QStringLiteral("Untitled"));
    EXPECT_EQ(doc->theUnLibrarayDocuementDefaultTitle(), QStringLiteral("untitled"));
    doc->textStorage()->setString(QStringLiteral("## A plan\nsteps"));
    EXPECT_EQ(doc->theUnLibrarayDocuementDefaultTitle(), QStringLiteral("A plan"));

    ASSERT_TRUE(writeFile(path(QStringLiteral("My Notes.v2.md")), "# Inside"));
    EXPECT_EQ(open(path(QStringLiteral("My Notes.v2.md")))->documentTitleRemoveMark(), QStringLiteral("My Notes.v2"));
    EXPECT_EQ(ORVDocument(app.get()).documentTitleRemoveMark(), QString());
}

TEST_F(LibraryDocument, SaveListsOtherDocumentsMediaAndStampsTheRow)
{
    for (const QString &f : {QStringLiteral("media/123/a.png"), QStringLiteral("media/123/b c.png"),
                             QStringLiteral("media/%1/own.png").arg(uuid), QStringLiteral("Media/%1/Up.png").arg(uuid)})
        ASSERT_TRUE(writeFile(docs + '/' + f, "png"));
    auto doc = open(docPath(uuid));
    doc->textStorage()->setString(QStringLiteral(
        "# Post\n![](media/123/a.png)\n![x](media/123/b%20c.png \"title\")\n![](media/%1/own.png)\n"
        "[upper](Media/%1/Up.png)\n![](media/123/missing.png)\n![](https://example.com/media/123/a.png)\n"
        "![](http://example.com/x.png)\n[]()\n\uFFFC")
                                          .arg(uuid));
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    ASSERT_TRUE(doc->saveDocument());
    const ORVDBArticle art = row();
    EXPECT_EQ(art.otherMediaPaths(), (QStringList{"media/123/a.png", "media/123/b c.png"}));
    EXPECT_GE(art.dateModif(), before);
    EXPECT_FALSE(readFile(docPath(uuid)).contains("\xEF\xBF\xBC"));

    // Only its own media: the list empties.
    doc->textStorage()->setString(QStringLiteral("![](media/%1/own.png)").arg(uuid));
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_TRUE(row().otherMediaPaths().isEmpty());
    EXPECT_TRUE(row().otherMedia().isEmpty());

    // A quick note leaves the row alone.
    doc->isQuickNoteDocument = true;
    doc->textStorage()->setString(QStringLiteral("![](media/123/a.png)"));
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_TRUE(row().otherMediaPaths().isEmpty());
}

TEST_F(LibraryDocument, MissingRowDoesNotStopTheSave)
{
    const qint64 stray = uuid + 1;
    ASSERT_TRUE(writeFile(docPath(stray), "stray"));
    auto doc = open(docPath(stray));
    ASSERT_TRUE(doc->isLibraryDocument());
    doc->textStorage()->setString(QStringLiteral("saved anyway"));
    ASSERT_TRUE(doc->saveDocument());
    EXPECT_EQ(readFile(docPath(stray)), QByteArray("saved anyway"));
    EXPECT_FALSE(app->libraryModeMainDBManager()->itemDBArticleWithUUID(stray));
}

TEST_F(LibraryDocument, MediaLocationForEveryKindOfDocument)
{
    std::optional<QString> name;
    std::optional<std::uint64_t> type;
    auto libraryDoc = open(docPath(uuid));
    EXPECT_EQ(libraryDoc->mediaSaveURLFloderType(&name, &type), docs);
    EXPECT_EQ(name, QStringLiteral("media"));
    EXPECT_FALSE(type);

    const QString source = path(QStringLiteral("Blog"));
    ASSERT_TRUE(writeFile(source + "/posts/2024/first.md", "# First"));
    app->externalSourceItemManager()->addItem(ORVExternalSourceItem::itemWithFolderPath(source));
    auto settings = app->externalSourceItemManager()->items().at(0)->settingData();
    settings->mediaFloder = QStringLiteral("assets");
    auto post = open(source + "/posts/2024/first.md");

    const auto where = [&](std::uint64_t folderType) {
        settings->folderType = folderType;
        name.reset();
        type.reset();
        return post->mediaSaveURLFloderType(&name, &type);
    };
    EXPECT_EQ(where(10), source + "/posts/2024"); // beside the document
    EXPECT_EQ(name, QStringLiteral("assets"));
    EXPECT_EQ(type, 10u);
    EXPECT_EQ(where(11), source); // in the source folder
    EXPECT_EQ(type, 11u);
    EXPECT_EQ(where(12), QString()); // another kind: no place, but the name and type
    EXPECT_EQ(name, QStringLiteral("assets"));
    EXPECT_EQ(type, 12u);

    ASSERT_TRUE(writeFile(path(QStringLiteral("loose.md")), "x"));
    auto loose = open(path(QStringLiteral("loose.md")));
    name.reset();
    type.reset();
    EXPECT_EQ(loose->mediaSaveURLFloderType(&name, &type), QString());
    EXPECT_FALSE(name);
    EXPECT_FALSE(type);
    EXPECT_EQ(ORVDocument::fetchRealImgPath(QStringLiteral("a.png \"title\"")), QStringLiteral("a.png"));
    EXPECT_EQ(ORVDocument::fetchRealImgPath(QStringLiteral("a.png")), QStringLiteral("a.png"));
}

TEST_F(DocumentTest, ExternalDocumentsFindTheirSourceAndItsNewlineSetting)
{
    const QString source = path(QStringLiteral("notes"));
    ASSERT_TRUE(writeFile(source + "/deep/inside.md", "x"));
    ASSERT_TRUE(writeFile(path(QStringLiteral("notes2/beside.md")), "x"));
    ASSERT_TRUE(writeFile(path(QStringLiteral("other/file.md")), "x"));
    ORVExternalSourceItemManager *sources = app->externalSourceItemManager();
    app->externalTreeData(); // built now, then kept in line with the list
    sources->addItem(ORVExternalSourceItem::itemWithFolderPath(path(QStringLiteral("other"))));
    sources->addItem(ORVExternalSourceItem::itemWithFolderPath(source));

    auto inside = open(source + "/deep/inside.md");
    ASSERT_TRUE(inside->isExternalInnerDocument());
    EXPECT_EQ(inside->externalCateroryItem()->fullPath, source);
    EXPECT_FALSE(open(path(QStringLiteral("notes2/beside.md")))->isExternalInnerDocument()); // a prefix is not a folder

    auto settings = inside->externalCateroryItem()->settingData();
    prefs->setIsTranslateNewlineToBRtags(true);
    settings->newlinesToBR = 2;
    EXPECT_FALSE(inside->isMarkdownNewlineToBR());
    prefs->setIsTranslateNewlineToBRtags(false);
    settings->newlinesToBR = 1;
    EXPECT_TRUE(inside->isMarkdownNewlineToBR());
    settings->newlinesToBR = 0;
    EXPECT_FALSE(inside->isMarkdownNewlineToBR()); // the preference
    prefs->setIsTranslateNewlineToBRtags(true);
    EXPECT_TRUE(open(path(QStringLiteral("notes2/beside.md")))->isMarkdownNewlineToBR());

    sources->removeItem(sources->itemWithPath(source));
    EXPECT_FALSE(open(source + "/deep/inside.md")->isExternalInnerDocument());
}
