// The query language, the snippet arithmetic, and searching a library and
// folders through the driver's notifications.
#include "LibraryFixture.h"

#include "core/ORVNotificationCenter.h"
#include "library/ORVSearchController.h"
#include "library/supportedDocumentExt.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace {

ORVSearchKeys keys(const QStringList &content, const QStringList &tags = {}, const QStringList &cats = {},
                   const QStringList &title = {})
{
    return {content, tags, cats, title};
}

QString snippet(const QString &content, const QStringList &keyList)
{
    QString s = QStringLiteral("<none>");
    if (!ORVSearchController::checkContentHasKeyAndHighlight(content, keyList, &s))
        return QStringLiteral("<no match>");
    return s;
}

} // namespace

TEST(SearchQuery, SwitchesContentWordsAndTheJoinedPhrase)
{
    const auto parse = &ORVSearchController::analyticsSearchString;
    EXPECT_EQ(parse(QStringLiteral("hello world")), keys({"hello world", "hello", "world"}));
    EXPECT_EQ(parse(QStringLiteral("single")), keys({"single"}));
    EXPECT_EQ(parse(QStringLiteral("-t a,b -c work word1 word2")), keys({"word1 word2", "word1", "word2"}, {"a", "b"}, {"work"}));
    EXPECT_EQ(parse(QStringLiteral("-H Title -T A")), keys({}, {"A"}, {}, {"Title"}));
    // After the first run of words, other words are ignored.
    EXPECT_EQ(parse(QStringLiteral("first -t x later words")), keys({"first"}, {"x"}));
    // Empty pieces are dropped; a trailing "-" is a switch being typed.
    EXPECT_EQ(parse(QStringLiteral("foo  bar -")), keys({"foo bar", "foo", "bar"}));
    EXPECT_EQ(parse(QStringLiteral("-")), keys({}));
    EXPECT_TRUE(parse(QStringLiteral("-t")).isEmpty());
    EXPECT_TRUE(parse(QStringLiteral("-t  ")).isEmpty());
    // A switch is not the value of the one before it.
    EXPECT_EQ(parse(QStringLiteral("-t -c work")), keys({}, {}, {"work"}));
}

TEST(SearchQuery, OnlyAChangedQueryIsTakenAndTheHighlightsListEveryKey)
{
    ORVSearchController search;
    EXPECT_FALSE(search.setupAndAnalyticsWithSearchString(QStringLiteral("-t")));
    EXPECT_TRUE(search.keys().isEmpty());
    EXPECT_TRUE(search.setupAndAnalyticsWithSearchString(QStringLiteral("big cat -t pets -c zoo -h lion")));
    EXPECT_EQ(search.searchHighlightArr(), QStringList({"big cat", "big", "cat", "pets", "zoo", "lion"}));
    EXPECT_FALSE(search.setupAndAnalyticsWithSearchString(QStringLiteral("big  cat -t pets -c zoo -h lion")));
    EXPECT_FALSE(search.setupAndAnalyticsWithSearchString(QStringLiteral("-t")));
    EXPECT_EQ(search.keys().searchTagsArr, QStringList({"pets"})); // "-t" alone changed nothing
    EXPECT_TRUE(search.setupAndAnalyticsWithSearchString(QStringLiteral("big")));
}

TEST(SearchSnippet, PiecesFollowTheArithmeticToTheCharacter)
{
    // Near the start: no "...", ten characters past the key, then the tail.
    EXPECT_EQ(snippet(QStringLiteral("ab KEY cdefghijklmnopqrstuvwxyz"), {"key"}),
              QStringLiteral("KEY cdefghijk...lmnopqrstuvwxyz"));
    // Further in: from five before the key.
    EXPECT_EQ(snippet(QStringLiteral("0123456789 key 0123456789 0123456789"), {"key"}),
              QStringLiteral("...6789 key 0123...9 0123456789"));
    // Near the end the piece is as long as what follows the key, and stops short of its end.
    EXPECT_EQ(snippet(QStringLiteral("0123456789KEY0123456789"), {"key"}), QStringLiteral("...56789KEY01"));
    // Every occurrence, in the order of the text; line feeds become spaces.
    EXPECT_EQ(snippet(QStringLiteral("Alpha beta\nalpha"), {"alpha"}), QStringLiteral("Alpha beta alph..."));
    // A text shorter than 11: the piece is what follows the key, here nothing.
    EXPECT_EQ(snippet(QStringLiteral("key"), {"key"}), QString());
    // Every key must be there.
    EXPECT_EQ(snippet(QStringLiteral("a big dog and a cat"), {"big cat", "big", "cat"}), QStringLiteral("<no match>"));
    EXPECT_NE(snippet(QStringLiteral("a BIG Cat"), {"big cat", "big", "cat"}), QStringLiteral("<no match>"));
    // The tail only while the snippet is shorter than 300 characters.
    const QString many = QString(QStringLiteral("word filler ")).repeated(40) + QStringLiteral("THE END OF IT ALL");
    EXPECT_FALSE(snippet(many, {"word"}).endsWith(QStringLiteral("THE END OF IT ALL")));
    EXPECT_TRUE(snippet(QStringLiteral("word ") + QString(30, u'x') + QStringLiteral(" THE END"), {"word"})
                    .endsWith(QStringLiteral("THE END")));

    EXPECT_EQ(ORVSearchController::highlightKeyStringWithRange(6, 2, QStringLiteral("0123456789abcdefghij")),
              QStringLiteral("...123456789abc"));
    EXPECT_TRUE(ORVSearchController::checkStringHasKeysWithString(QStringLiteral("My-Notes.md"), {"zzz", "notes"}));
    EXPECT_FALSE(ORVSearchController::checkStringHasKeysWithString(QStringLiteral("My-Notes.md"), {"zzz"}));
}

namespace {

class Search : public LibraryFixture
{
protected:
    // Runs a search and collects its result notifications until the final one.
    QList<QVariantMap> run(const std::function<void()> &start)
    {
        QList<QVariantMap> results;
        QEventLoop loop;
        ORVNotificationCenter::defaultCenter()->addObserver(kORVSearchControllerDidUpdateResultNotification, &loop,
                                                            [&](const ORVNotification &n) {
                                                                if (n.sender != &search)
                                                                    return;
                                                                results << n.userInfo;
                                                                if (n.userInfo.value(QStringLiteral("isOK")).toBool())
                                                                    loop.quit();
                                                            });
        start();
        if (results.isEmpty() || !results.last().value(QStringLiteral("isOK")).toBool()) {
            QTimer::singleShot(10000, &loop, &QEventLoop::quit);
            loop.exec();
        }
        return results;
    }
    QList<ORVLibraryListDataItem> library(const QString &query)
    {
        const auto results = run([&] { search.queryWithLibraryURL(lib, manager, query); });
        EXPECT_EQ(results.size(), 1);
        return results.isEmpty() ? QList<ORVLibraryListDataItem>()
                                 : results.last().value(QStringLiteral("data")).value<QList<ORVLibraryListDataItem>>();
    }

    ORVSearchController search;
};

} // namespace

TEST_F(Search, TheLibraryIsSearchedWholeTrashIncludedAndNarrowedBySwitches)
{
    const ORVDBCat home = addCat(QStringLiteral("Home"));
    const ORVDBArticle garden = addDoc("# Garden plan\nWe plant Big Cats here.", {home.uuid()}, 1700000000, 1700000300);
    const ORVDBArticle zoo = addDoc("# Zoo\nThe big dog and the cat.", {}, 1700000000, 1700000200);
    const ORVDBArticle old = addDoc("# Old\nbig cat in the trash", {}, 1700000000, 1700000100, ORVDBArticle::StateTrash);
    const ORVDBArticle gone = addDoc("# Gone big cat");
    ASSERT_TRUE(QFile::remove(docPath(gone.uuid())));
    ASSERT_TRUE(manager->updateDBArticleWithTagNames(garden, {QStringLiteral("green"), QStringLiteral("Work")}));

    // Two words only where they stand together; newest change first; the trash too.
    QList<ORVLibraryListDataItem> rows = library(QStringLiteral("big cat"));
    EXPECT_EQ(uuids(rows), QList<qint64>({garden.uuid(), old.uuid()}));
    ASSERT_FALSE(rows.isEmpty());
    EXPECT_EQ(rows.first().title(), QStringLiteral("Garden plan"));
    EXPECT_TRUE(rows.first().content.contains(QStringLiteral("Big Cats"))) << qPrintable(rows.first().content);

    // Filters alone: every document that passes, with its own summary.
    rows = library(QStringLiteral("-t green"));
    ASSERT_EQ(uuids(rows), QList<qint64>({garden.uuid()}));
    EXPECT_EQ(rows.first().content, QStringLiteral("We plant Big Cats here."));
    // Category, two tags and a word: all three must hold.
    EXPECT_EQ(uuids(library(QStringLiteral("-c home -t gre,WORK plant"))), QList<qint64>({garden.uuid()}));
    EXPECT_TRUE(library(QStringLiteral("-c home -t gre,play plant")).isEmpty());
    EXPECT_EQ(uuids(library(QStringLiteral("-h zoo"))), QList<qint64>({zoo.uuid()}));
    EXPECT_EQ(uuids(library(QStringLiteral("-h zoo dog"))), QList<qint64>({zoo.uuid()}));
    // Repeating the same text scans again (the parse reports no change).
    EXPECT_EQ(uuids(library(QStringLiteral("-h zoo dog"))), QList<qint64>({zoo.uuid()}));

    // The rows are kept between searches: a title changed meanwhile shows as
    // it was, while content is always read anew.
    ASSERT_TRUE(orvotest::writeFile(docPath(zoo.uuid()), "# Renamed\nThe big dog and the cat."));
    rows = library(QStringLiteral("dog"));
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.first().title(), QStringLiteral("Zoo"));
    search.clearSearchData();
    EXPECT_EQ(library(QStringLiteral("dog")).first().title(), QStringLiteral("Renamed"));
}

TEST_F(Search, ALaterSearchSilentlyReplacesAnEarlierOne)
{
    addDoc("# one\napple");
    addDoc("# two\nbanana");
    QList<QVariantMap> results = run([&] {
        search.queryWithLibraryURL(lib, manager, QStringLiteral("apple"));
        search.queryWithLibraryURL(lib, manager, QStringLiteral("banana"));
    });
    ASSERT_EQ(results.size(), 1);
    EXPECT_EQ(results.first().value(QStringLiteral("searchString")).toString(), QStringLiteral("banana"));
    EXPECT_EQ(results.first().value(QStringLiteral("keys")).toStringList(), QStringList({"banana"}));
    // A stopped search reports nothing.
    search.queryWithLibraryURL(lib, manager, QStringLiteral("apple"));
    search.stopQuery();
    results = run([&] { search.queryWithLibraryURL(lib, manager, QStringLiteral("banana")); });
    EXPECT_EQ(results.size(), 1);
}

TEST_F(Search, FoldersAreWalkedByExtensionWithPartialResults)
{
    const QString folder = dir.filePath(QStringLiteral("notes"));
    const auto put = [&](const QString &relative, const QByteArray &content) {
        QDir().mkpath(QFileInfo(folder + QLatin1Char('/') + relative).absolutePath());
        EXPECT_TRUE(orvotest::writeFile(folder + QLatin1Char('/') + relative, content));
        return folder + QLatin1Char('/') + relative;
    };
    const QString a = put(QStringLiteral("a.md"), "# A\nthe big cat");
    put(QStringLiteral("sub/b.MARKDOWN"), "# B\nBig Cat too");
    put(QStringLiteral("c.txt"), "nothing here");
    put(QStringLiteral("d.rst"), "big cat");
    put(QStringLiteral(".hidden/e.md"), "big cat");
    put(QStringLiteral("f.html"), "big cat");
    put(QStringLiteral("latin1.txt"), "big cat caf\xe9");

    const QStringList paths{folder, a, dir.filePath(QStringLiteral("missing"))};
    const QList<QVariantMap> results =
        run([&] { search.queryWithExternalURLs(paths, QStringLiteral("big cat"), supportedDocumentExt()); });
    ASSERT_EQ(results.size(), 4); // one partial result per path, then the final one
    EXPECT_FALSE(results.first().value(QStringLiteral("isOK")).toBool());
    EXPECT_EQ(results.first().value(QStringLiteral("type")).toString(), QStringLiteral("ext"));
    const auto hits = results.last().value(QStringLiteral("data")).value<ORVSearchExternalHits>();
    QStringList found;
    for (const ORVExternalListDataItem::Ptr &hit : hits)
        found << QDir(folder).relativeFilePath(hit->realPath);
    found.sort();
    EXPECT_EQ(found, QStringList({"a.md", "d.rst", "latin1.txt", "sub/b.MARKDOWN"}));
    for (const ORVExternalListDataItem::Ptr &hit : hits)
        if (hit->realPath == a) {
            EXPECT_EQ(hit->title(), QStringLiteral("a")); // a folder's rows are named after their files
            EXPECT_FALSE(hit->content.isEmpty());
        }

    // The same query again does nothing at all.
    int posted = 0;
    QObject context;
    ORVNotificationCenter::defaultCenter()->addObserver(kORVSearchControllerDidUpdateResultNotification, &context,
                                                        [&](const ORVNotification &) { ++posted; });
    search.queryWithExternalURLs(paths, QStringLiteral("big cat"), supportedDocumentExt());
    QCoreApplication::processEvents();
    EXPECT_EQ(posted, 0);

    // By file name alone: no content read, no snippet.
    const auto byName = run([&] { search.queryWithExternalURLs({folder}, QStringLiteral("-h b."), supportedDocumentExt()); });
    const auto named = byName.last().value(QStringLiteral("data")).value<ORVSearchExternalHits>();
    ASSERT_EQ(named.size(), 1);
    EXPECT_TRUE(named.first()->realPath.endsWith(QStringLiteral("b.MARKDOWN")));
    EXPECT_TRUE(named.first()->content.isEmpty());
    // Tags and categories mean nothing in folders: finished at once, empty.
    const auto none = run([&] { search.queryWithExternalURLs({folder}, QStringLiteral("-t x"), supportedDocumentExt()); });
    ASSERT_EQ(none.size(), 1);
    EXPECT_TRUE(none.first().value(QStringLiteral("data")).value<ORVSearchExternalHits>().isEmpty());
}
