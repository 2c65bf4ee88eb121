#include "app/ORVMainWindow.h"
#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "support/TestEnv.h"

#include <QLabel>
#include <QListWidget>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QStringList texts(const QListWidget *list)
{
    QStringList all;
    for (int i = 0; i < list->count(); ++i)
        all << list->item(i)->text();
    return all;
}

struct Desktop {
    Desktop() : prefs(home.filePath(QStringLiteral("Orvo.conf"))), app(&prefs, home.filePath(QStringLiteral("support"))) {}
    QTemporaryDir home;
    MyPreferences prefs;
    AppDelegate app;
};

} // namespace

TEST(ORVMainWindow, ListsTheEntriesAndTheDocumentsOfTheSelectedOne)
{
    Desktop d;
    const QString lib = d.home.filePath(QStringLiteral("lib"));
    ASSERT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(lib, QStringLiteral("# Welcome\n\nHello.")));
    ORVDBManager m(ORVLibraryFolder::databasePath(lib));
    const qint64 orvo = m.getAllItemsDBCat().first().uuid();
    ORVDBCat drafts;
    drafts.setUuid(orvo + 1);
    drafts.setPid(orvo);
    drafts.setName(QStringLiteral("Drafts"));
    drafts.setCatType(ORVCatType::SubCategory);
    ASSERT_TRUE(m.insertItemDBCat(drafts));
    ORVDBArticle note = ORVDBArticle::newDocumentArticle();
    ASSERT_TRUE(orvotest::writeFile(ORVLibraryFolder::documentPath(lib, note.uuid()), "# Garden notes\nbeans"));
    ASSERT_TRUE(m.insertItemDBArticle(note));
    ASSERT_TRUE(m.updateDBArticleWithCatIIDS(note, {drafts.uuid()}));
    ASSERT_TRUE(d.app.setLibraryModeMainURL(lib));

    ORVMainWindow window(&d.app);
    EXPECT_EQ(texts(window.categoryList()), QStringList({"Inbox  (2)", "Uncategorized  (0)", "Trash  (0)", "Orvo  (2)",
                                                         "    Drafts  (1)"}));
    EXPECT_EQ(window.documentList()->count(), 2);

    window.categoryList()->setCurrentRow(4);
    ASSERT_EQ(window.documentList()->count(), 1);
    EXPECT_TRUE(window.documentList()->item(0)->text().startsWith(QStringLiteral("Garden notes\n")));
    EXPECT_TRUE(window.documentList()->item(0)->text().contains(QStringLiteral("Drafts")));

    // A reload (another writer, say) keeps the selected entry.
    ASSERT_TRUE(m.updateDBArticleWithState(note, ORVDBArticle::StateTrash));
    window.reloadLibrary();
    EXPECT_EQ(window.categoryList()->currentRow(), 4);
    EXPECT_EQ(window.documentList()->count(), 0);
    EXPECT_EQ(window.categoryList()->item(2)->text(), QStringLiteral("Trash  (1)"));
}

TEST(ORVMainWindow, SaysWhatIsWrongInsteadOfShowingLists)
{
    Desktop d;
    ORVMainWindow none(&d.app);
    EXPECT_TRUE(none.findChild<QLabel *>()->text().contains(QStringLiteral("orvo library init")));

    const QString bad = d.home.filePath(QStringLiteral("bad"));
    ASSERT_TRUE(orvotest::writeFile(bad + QStringLiteral("/mainlib.db"), "not a database"));
    QDir().mkpath(bad + QStringLiteral("/docs"));
    ORVMainWindow unusable(&d.app, bad);
    EXPECT_TRUE(unusable.findChild<QLabel *>()->text().contains(QStringLiteral("not a SQLite database")));
    EXPECT_EQ(orvotest::readFile(bad + QStringLiteral("/mainlib.db")), QByteArray("not a database"));
}
