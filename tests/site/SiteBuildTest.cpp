// Whole sites built from real libraries with the "printvars" theme, which
// prints the variables each page gets, checked file by file.

#include "site/SiteTestSupport.h"

#include "site/site_text.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

using namespace sitetest;

namespace {

class SiteBuild : public ::testing::Test
{
protected:
    void SetUp() override
    {
        installTestTheme(QStringLiteral("printvars"));
        site = lib.addCategory(QStringLiteral("Blog"));
        lib.changeCategory(site, [](ORVDBCat &c) { c.setSiteSkinName(QStringLiteral("printvars")); });
    }
    SiteLibrary lib;
    qint64 site = 0;
};

QStringList words(const QString &text)
{
    return text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool wellFormedXML(const QString &text)
{
    QXmlStreamReader reader(text);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

} // namespace

TEST_F(SiteBuild, EmptySiteMakesItsFolderWithMediaAndNoPage)
{
    EXPECT_TRUE(lib.build(site));
    EXPECT_TRUE(QFileInfo(lib.out(QStringLiteral("media"))).isDir());
    EXPECT_TRUE(lib.has(QStringLiteral("asset/theme.css")));
    EXPECT_FALSE(lib.has(QStringLiteral("index.html")));
    EXPECT_FALSE(lib.has(QStringLiteral("archives.html")));
    // The build path came from the name and was saved in the row.
    EXPECT_EQ(lib.manager->itemDBCatWithUUID(site)->siteBuildPath(), QStringLiteral("Blog"));
}

TEST_F(SiteBuild, PagingOfTenPostsByThree)
{
    const qint64 cat = lib.addCategory(QStringLiteral("X"), site, QStringLiteral("x"));
    QList<qint64> ids;
    for (int i = 0; i < 10; ++i)
        ids.append(lib.addPost(QStringLiteral("# Post %1\nbody %1\n").arg(i), {cat}));
    lib.changeCategory(site, [](ORVDBCat &c) { c.setSitePageSize(3); });
    ASSERT_TRUE(lib.build(site));

    // Newest first by default: the last made post leads.
    const QString p0 = lib.read(QStringLiteral("x.html"));
    EXPECT_EQ(line(p0, QStringLiteral("PREV")), QString());
    EXPECT_EQ(line(p0, QStringLiteral("NEXT")), QStringLiteral("x_1.html"));
    EXPECT_EQ(words(line(p0, QStringLiteral("URLS"))).first(), QStringLiteral("%1.html").arg(ids.last()));
    const QString p1 = lib.read(QStringLiteral("x_1.html"));
    EXPECT_EQ(line(p1, QStringLiteral("PREV")), QStringLiteral("x.html"));
    const QString p2 = lib.read(QStringLiteral("x_2.html"));
    EXPECT_EQ(line(p2, QStringLiteral("PREV")), QStringLiteral("x_1.html"));
    EXPECT_EQ(line(p2, QStringLiteral("NEXT")), QStringLiteral("x_3.html"));
    const QString p3 = lib.read(QStringLiteral("x_3.html"));
    EXPECT_EQ(words(line(p3, QStringLiteral("URLS"))), QStringList{QStringLiteral("%1.html").arg(ids.first())});
    EXPECT_EQ(line(p3, QStringLiteral("NEXT")), QString());
    EXPECT_FALSE(lib.has(QStringLiteral("x_4.html")));
    // The list of all posts pages the same way, and the home page falls back to it.
    EXPECT_TRUE(lib.has(QStringLiteral("all_3.html")));
    EXPECT_EQ(lib.read(QStringLiteral("index.html")), lib.read(QStringLiteral("all.html")));

    // Page size 0: one page.
    lib.changeCategory(site, [](ORVDBCat &c) { c.setSitePageSize(0); });
    ASSERT_TRUE(lib.build(site));
    EXPECT_EQ(words(line(lib.read(QStringLiteral("x.html")), QStringLiteral("URLS"))).size(), 10);
    EXPECT_FALSE(lib.has(QStringLiteral("x_1.html")));
}

TEST_F(SiteBuild, PostVariablesSummaryNavigationAndLinks)
{
    const qint64 outside = lib.addCategory(QStringLiteral("Elsewhere"), 0, QString(), ORVCatType::TopCategory);
    const qint64 foreign = lib.addPost(QStringLiteral("# Foreign\n"), {outside});
    SiteLibrary::Doc target;
    target.text = QStringLiteral("# Target\n\ntext\n");
    target.cats = {site};
    target.docName = QStringLiteral("the target");
    const qint64 targetId = lib.addDocument(target);
    SiteLibrary::Doc d;
    d.text = QStringLiteral("## Hello & <b>world</b>\nIntro [t](orvolib://%1) [s](orvolib://123) [f](ORVOLIB://%2)\n\n"
                            "<!-- more -->\n\nRest\n\n<!-- more -->\n\n```flow\nst=>start: a\n```\n")
                 .arg(targetId)
                 .arg(foreign);
    d.cats = {site};
    d.tags = {QStringLiteral("a b")};
    d.postExtValue = QStringLiteral("{\"subtitle\":\"Sub\",\"none\":null}");
    const qint64 id = lib.addDocument(d);
    ASSERT_TRUE(lib.build(site));

    const QString page = lib.read(QStringLiteral("%1.html").arg(id));
    const QJsonObject post = json(page, QStringLiteral("POST")).toObject();
    EXPECT_EQ(post.value(QLatin1String("title")).toString(), QStringLiteral("Hello & <b>world</b>"));
    const QString content = post.value(QLatin1String("content")).toString();
    EXPECT_TRUE(content.contains(QStringLiteral("href=\"the%20target.html\""))) << content.toStdString();
    EXPECT_TRUE(content.contains(QStringLiteral("orvolib://123")));
    EXPECT_TRUE(content.contains(QStringLiteral("orvolib://%1").arg(foreign), Qt::CaseInsensitive));
    // The first "more" cuts the summary; both comments stay in the content.
    EXPECT_EQ(post.value(QLatin1String("readMore")).toString(), QStringLiteral("YES"));
    EXPECT_FALSE(post.value(QLatin1String("desContent")).toString().contains(QStringLiteral("Rest")));
    EXPECT_EQ(content.count(QStringLiteral("<!-- more -->")), 2);
    EXPECT_EQ(content.count(QStringLiteral("<span id=\"more\"></span><!-- more -->")), 1);
    EXPECT_FALSE(post.value(QLatin1String("desContentTextOnly")).toString().contains(QLatin1Char('<')));
    EXPECT_EQ(post.value(QLatin1String("ext_subtitle")).toString(), QStringLiteral("Sub"));
    EXPECT_EQ(post.value(QLatin1String("ext_none")).toString(), QString());
    EXPECT_EQ(post.value(QLatin1String("chart_flowSeq")).toString(), QStringLiteral("y"));
    EXPECT_TRUE(post.contains(QLatin1String("chart_scripts")));
    EXPECT_FALSE(post.contains(QLatin1String("chart_mermaid")));
    const QJsonArray tags = post.value(QLatin1String("tags")).toArray();
    ASSERT_EQ(tags.size(), 1);
    EXPECT_EQ(tags[0].toObject().value(QLatin1String("url")).toString(), QStringLiteral("tag_a%20b.html"));
    EXPECT_EQ(line(page, QStringLiteral("TITLE")), QStringLiteral("Hello & <b>world</b> - "));

    // The tag page: the file name has the blank, the link is encoded, and
    // currentTag's own url is not.
    ASSERT_TRUE(lib.has(QStringLiteral("tag_a b.html")));
    const QJsonObject current = json(lib.read(QStringLiteral("tag_a b.html")), QStringLiteral("CURRENT")).toObject();
    EXPECT_EQ(current.value(QLatin1String("url")).toString(), QStringLiteral("tag_a b.html"));

    // Neighbours: the newer post has no previous one.
    const QJsonObject nav = json(page, QStringLiteral("NAV")).toObject();
    EXPECT_FALSE(nav.contains(QLatin1String("prev")));
    EXPECT_EQ(nav.value(QLatin1String("next")).toObject().value(QLatin1String("url")).toString(),
              QStringLiteral("the%20target.html"));
    EXPECT_TRUE(lib.has(QStringLiteral("the target.html")));
}

TEST_F(SiteBuild, CategoryNamesTreeAndDeepCategories)
{
    const qint64 a = lib.addCategory(QStringLiteral("Same"), site);
    const qint64 b = lib.addCategory(QStringLiteral("Same"), site);
    const qint64 c = lib.addCategory(QStringLiteral("Same-1"), site);
    const qint64 d = lib.addCategory(QStringLiteral("Same"), site);
    const qint64 deep1 = lib.addCategory(QStringLiteral("Deep1"), a);
    const qint64 deep2 = lib.addCategory(QStringLiteral("Deep2"), deep1);
    for (const qint64 cat : {a, b, c, d})
        lib.addPost(QStringLiteral("# In %1\n").arg(cat), {cat});
    const qint64 deepPost = lib.addPost(QStringLiteral("# Deep\n"), {deep2});
    ASSERT_TRUE(lib.build(site));

    // The clashes pile their suffixes: Same, Same-1, then "Same-1" is
    // taken by the third category, so the fourth becomes Same-1-2.
    EXPECT_TRUE(lib.has(QStringLiteral("Same.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("Same-1.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("Same-1-2.html")));
    const QString same1 = lib.read(QStringLiteral("Same-1.html"));
    EXPECT_EQ(words(line(same1, QStringLiteral("URLS"))).size(), 1);

    // The deep post shows on every parent's page.
    for (const QString &name : {QStringLiteral("Same.html"), QStringLiteral("Deep1.html"), QStringLiteral("Deep2.html")})
        EXPECT_TRUE(line(lib.read(name), QStringLiteral("URLS")).contains(QStringLiteral("%1.html").arg(deepPost)))
            << name.toStdString();
    // The tree has two levels, with counts including the sub-categories.
    const QJsonArray tree = json(lib.read(QStringLiteral("archives.html")), QStringLiteral("TREE")).toArray();
    ASSERT_EQ(tree.size(), 4);
    const QJsonObject first = tree[0].toObject();
    EXPECT_EQ(first.value(QLatin1String("count")).toInt(), 2);
    const QJsonArray children = first.value(QLatin1String("children")).toArray();
    ASSERT_EQ(children.size(), 1);
    EXPECT_FALSE(children[0].toObject().contains(QLatin1String("children")));
    // The first-level record stands as currentCat on its page.
    EXPECT_TRUE(json(lib.read(QStringLiteral("Same.html")), QStringLiteral("CURRENT")).toObject().contains(
        QLatin1String("children")));
}

TEST_F(SiteBuild, PagesIndexFallbacksAndTemplateOverrides)
{
    SiteLibrary::Doc about;
    about.text = QStringLiteral("# About me\ntext\n");
    about.cats = {site};
    about.type = 1;
    about.docName = QStringLiteral("about");
    lib.addDocument(about);

    // Pages without posts: no archive, no list, so no home page either.
    ASSERT_TRUE(lib.build(site));
    EXPECT_TRUE(lib.read(QStringLiteral("about.html")).startsWith(QStringLiteral("HEADER")));
    EXPECT_TRUE(lib.read(QStringLiteral("about.html")).contains(QStringLiteral("PAGEB=About me")));
    EXPECT_FALSE(lib.has(QStringLiteral("archives.html")));
    EXPECT_FALSE(lib.has(QStringLiteral("index.html")));

    // With posts and a page named index, that page is the home page and
    // has the archive.
    const qint64 journal = lib.addCategory(QStringLiteral("Journal"), site, QStringLiteral("journal"));
    const qint64 post = lib.addPost(QStringLiteral("# Journal post\n"), {journal});
    SiteLibrary::Doc home;
    home.text = QStringLiteral("# Home\n");
    home.cats = {site};
    home.type = 1;
    home.docName = QStringLiteral("index");
    lib.addDocument(home);
    ASSERT_TRUE(lib.build(site));
    const QString index = lib.read(QStringLiteral("index.html"));
    EXPECT_EQ(line(index, QStringLiteral("ARCHIVES")), QStringLiteral("1"));
    EXPECT_EQ(words(line(index, QStringLiteral("POSTS"))), QStringList{QStringLiteral("%1.html").arg(post)});
    // Overrides by docName, with one level of includes.
    const QString postPage = lib.read(QStringLiteral("%1.html").arg(post));
    EXPECT_TRUE(postPage.contains(QStringLiteral("POSTB=Journal post")));
    EXPECT_TRUE(postPage.contains(QStringLiteral("PARTIAL <!-- include(missing.html) --> <!-- include(footer.html) -->")));
    EXPECT_TRUE(lib.read(QStringLiteral("journal.html")).contains(QStringLiteral("CATEGORYB=Journal")));
    // The page is in the sitemap only when the site has a URL; the home isn't.
    EXPECT_FALSE(lib.has(QStringLiteral("sitemap.xml")));
    EXPECT_FALSE(lib.has(QStringLiteral("atom.xml")));
    lib.changeCategory(site, [](ORVDBCat &c) { c.setSiteURL(QStringLiteral("https://example.org")); });
    ASSERT_TRUE(lib.build(site));
    const QString sitemap = lib.read(QStringLiteral("sitemap.xml"));
    EXPECT_TRUE(wellFormedXML(sitemap));
    EXPECT_TRUE(sitemap.contains(QStringLiteral("<p>about.html</p>")));
    EXPECT_FALSE(sitemap.contains(QStringLiteral("index.html")));
    EXPECT_TRUE(wellFormedXML(lib.read(QStringLiteral("atom.xml"))));
    EXPECT_EQ(lib.read(QStringLiteral("journal-atom.xml")).count(QStringLiteral("<e>")), 1);
    EXPECT_EQ(line(lib.read(QStringLiteral("archives.html")), QStringLiteral("SITE")).section(QLatin1Char('|'), 1, 2),
              QStringLiteral("https://example.org/|example.org"));
}

TEST_F(SiteBuild, SiteVariablesMenuAndExtensions)
{
    lib.addPost(QStringLiteral("# One\n"), {site});
    lib.changeCategory(site, [](ORVDBCat &c) {
        c.setSiteExtValue(QStringLiteral("{\"tagline\":\"Hi\"}"));
        c.setIsEnableChart(true);
    });
    ASSERT_TRUE(lib.build(site));
    QString page = lib.read(QStringLiteral("archives.html"));
    const QJsonArray menu = json(page, QStringLiteral("MENU")).toArray();
    ASSERT_EQ(menu.size(), 2);
    EXPECT_EQ(menu[0].toObject().value(QLatin1String("target")).toString(), QStringLiteral("self"));
    EXPECT_EQ(menu[1].toObject().value(QLatin1String("target")).toString(), QStringLiteral("_self"));
    EXPECT_EQ(line(page, QStringLiteral("EXT")), QStringLiteral("Hi"));
    EXPECT_TRUE(line(page, QStringLiteral("SUPPORT")).contains(QStringLiteral("asset/chart/all-min.js")));

    // A stored menu replaces the defaults; one that doesn't parse leaves none.
    lib.changeCategory(site, [](ORVDBCat &c) {
        c.setSiteMainMenuData(QStringLiteral("[{\"name\":\"Home\",\"url\":\"index.html\",\"target\":\"_self\"},"
                                             "{\"name\":\"Out\",\"url\":\"https://x.org\",\"className\":null,"
                                             "\"target\":true}]"));
    });
    ASSERT_TRUE(lib.build(site));
    const QJsonArray stored = json(lib.read(QStringLiteral("archives.html")), QStringLiteral("MENU")).toArray();
    ASSERT_EQ(stored.size(), 2);
    EXPECT_EQ(stored[0].toObject().value(QLatin1String("target")).toString(), QStringLiteral("_self"));
    EXPECT_EQ(stored[1].toObject().value(QLatin1String("target")).toString(), QStringLiteral("_blank"));
    EXPECT_EQ(stored[1].toObject().value(QLatin1String("className")).toString(), QString());
    lib.changeCategory(site, [](ORVDBCat &c) { c.setSiteMainMenuData(QStringLiteral("{broken")); });
    ASSERT_TRUE(lib.build(site));
    EXPECT_EQ(line(lib.read(QStringLiteral("archives.html")), QStringLiteral("MENU")), QStringLiteral("[]"));
}

TEST_F(SiteBuild, UpdateBuildRewritesEqualTextAndCopiesOnlyChangedMedia)
{
    // One last build date for both builds, an hour ahead, so that the
    // update build counts nothing as changed and the pages print the same.
    lib.changeCategory(site, [](ORVDBCat &c) { c.setSiteLastBuildDate(QDateTime::currentSecsSinceEpoch() + 3600); });
    const qint64 post = lib.addPost(QStringLiteral("# With media\n![x](media/%1/a.png)\n").arg(lib.nextUUID + 1), {site});
    const QString media = QDir(lib.path).filePath(QStringLiteral("docs/media/%1").arg(post));
    ASSERT_TRUE(QDir().mkpath(media));
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/a.png"), "png"));
    ASSERT_TRUE(lib.build(site));
    const QString copied = lib.out(QStringLiteral("media/%1/a.png").arg(post));
    EXPECT_EQ(orvotest::readFile(copied), QByteArray("png"));
    EXPECT_EQ(lib.builder->copiedMediaCount(), 1);
    ASSERT_TRUE(orvotest::writeFile(lib.out(QStringLiteral("CNAME")), "example.org"));
    ASSERT_TRUE(orvotest::writeFile(lib.out(QStringLiteral("stale.html")), "old"));

    QHash<QString, QByteArray> before;
    for (const QString &name : QDir(lib.out()).entryList({QStringLiteral("*.html"), QStringLiteral("*.xml")}))
        before.insert(name, orvotest::readFile(lib.out(name)));
    // Media is never overwritten, and on an update build an unchanged post's
    // media isn't looked at.
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/a.png"), "new"));
    ASSERT_TRUE(orvotest::writeFile(media + QStringLiteral("/b.png"), "b"));
    ASSERT_TRUE(lib.build(site, 0));
    EXPECT_EQ(lib.builder->copiedMediaCount(), 0);
    EXPECT_FALSE(QFileInfo::exists(lib.out(QStringLiteral("media/%1/b.png").arg(post))));
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        EXPECT_EQ(orvotest::readFile(lib.out(it.key())), it.value()) << it.key().toStdString();
    EXPECT_TRUE(lib.has(QStringLiteral("stale.html")));

    // A clearing build deletes HTML, XML, asset and media, and keeps the rest.
    ASSERT_TRUE(lib.build(site, 1));
    EXPECT_FALSE(lib.has(QStringLiteral("stale.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("CNAME")));
    EXPECT_EQ(orvotest::readFile(copied), QByteArray("new"));
    EXPECT_TRUE(QFileInfo::exists(lib.out(QStringLiteral("media/%1/b.png").arg(post))));
}

TEST_F(SiteBuild, NamesFromTheLibraryNeverLeaveTheOutputFolder)
{
    const qint64 cat = lib.addCategory(QStringLiteral("../../evil"), site);
    SiteLibrary::Doc d;
    d.text = QStringLiteral("# Escape\n");
    d.cats = {cat};
    d.tags = {QStringLiteral("../../tag")};
    d.docName = QStringLiteral("../../../escaped");
    lib.addDocument(d);
    SiteLibrary::Doc dots = d;
    dots.docName = QStringLiteral("..");
    dots.tags = {};
    lib.addDocument(dots);
    ASSERT_TRUE(lib.build(site));
    const QStringList outside = QDir(lib.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    EXPECT_EQ(outside, (QStringList{QStringLiteral("lib"), QStringLiteral("out")}));
    EXPECT_EQ(QDir(lib.outputBase).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{QStringLiteral("Blog")});
    EXPECT_TRUE(lib.has(QStringLiteral("..-..-..-escaped.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("_.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("..-..-evil.html")));
    EXPECT_TRUE(lib.has(QStringLiteral("tag_..-..-tag.html")));
}

TEST_F(SiteBuild, TemplateErrorStopsLaterWritesAndNamesItsFile)
{
    lib.addPost(QStringLiteral("# First\n"), {site});
    lib.addPost(QStringLiteral("# Second\n"), {site});
    ASSERT_TRUE(lib.build(site));
    ASSERT_TRUE(orvotest::writeFile(lib.out(QStringLiteral("keep.txt")), "mine"));
    const QString theme = QDir(ORVSiteTheme::userThemesDirectory()).filePath(QStringLiteral("printvars"));
    ASSERT_TRUE(orvotest::writeFile(theme + QStringLiteral("/sidebar.html"), "{{ missing }}"));
    const QByteArray archiveBefore = orvotest::readFile(lib.out(QStringLiteral("archives.html")));

    EXPECT_FALSE(lib.build(site, 0));
    ASSERT_FALSE(lib.builder->errorArray().isEmpty());
    const QString message = lib.builder->errorArray().first().description();
    EXPECT_TRUE(message.startsWith(QStringLiteral("sidebar.html: "))) << message.toStdString();
    EXPECT_TRUE(message.contains(QStringLiteral("missing")));
    // Nothing was written after the error; files of others stay.
    EXPECT_EQ(orvotest::readFile(lib.out(QStringLiteral("archives.html"))), archiveBefore);
    EXPECT_EQ(orvotest::readFile(lib.out(QStringLiteral("keep.txt"))), QByteArray("mine"));
    installTestTheme(QStringLiteral("printvars"));
}

TEST_F(SiteBuild, BuildPathSuffixesPileUpAgainstSiblings)
{
    const qint64 other = lib.addCategory(QStringLiteral("Other"));
    const qint64 third = lib.addCategory(QStringLiteral("Third"));
    lib.changeCategory(other, [](ORVDBCat &c) { c.setSiteBuildPath(QStringLiteral("Blog")); });
    lib.changeCategory(third, [](ORVDBCat &c) { c.setSiteBuildPath(QStringLiteral("Blog-1")); });
    ASSERT_TRUE(lib.build(site));
    EXPECT_EQ(lib.manager->itemDBCatWithUUID(site)->siteBuildPath(), QStringLiteral("Blog-1-2"));
}
