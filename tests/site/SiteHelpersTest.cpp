// The site's text helpers, theme look-up and options, extension
// definitions, settings checks, the publish script file and the loopback
// server.

#include "site/SiteTestSupport.h"

#include "site/ORVLibraryExtensionItem.h"
#include "site/ORVSitePublishScript.h"
#include "site/ORVSiteSettings.h"
#include "site/ORVSiteStaticServer.h"
#include "site/ORVSiteTemplateFilters.h"
#include "site/site_text.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpSocket>
#include <QTimer>

using namespace sitetest;

TEST(SiteText, UrlStyleNames)
{
    EXPECT_EQ(stringByReturnURLStyleStringWithMaxLength(QStringLiteral("  Héllo,   Wörld! 2024 "), 30),
              QStringLiteral("hello-world-2024"));
    const QString chinese = stringByReturnURLStyleStringWithMaxLength(QStringLiteral("你好世界，今天天气很好"), 30);
    EXPECT_TRUE(chinese.startsWith(QStringLiteral("ni-hao-shi-jie"))) << chinese.toStdString();
    EXPECT_LE(chinese.size(), 30);
    EXPECT_FALSE(chinese.endsWith(QLatin1Char('-')));
    EXPECT_EQ(chinese, chinese.toLower());
    // 31 characters whose 30th is a hyphen: cut to 30, then the hyphen goes.
    const QString name = QStringLiteral("abcdefghij abcdefghij abcdefgh xyz");
    EXPECT_EQ(stringByReturnURLStyleStringWithMaxLength(name, 30), QStringLiteral("abcdefghij-abcdefghij-abcdefgh"));
    EXPECT_EQ(stringByReturnURLStyleStringWithMaxLength(QStringLiteral("abcdefghij abcdefghij abcdefg xyz"), 30),
              QStringLiteral("abcdefghij-abcdefghij-abcdefg"));
}

TEST(SiteText, EncodingStrippingAndSafeNames)
{
    EXPECT_EQ(stringByURLEncodedString(QStringLiteral("a b/é?#%")), QStringLiteral("a%20b/%C3%A9%3F%23%25"));
    EXPECT_EQ(stringByURLEncodedString(QStringLiteral("a-b_c.d~e!$&'()*+,;=:@")), QStringLiteral("a-b_c.d~e!$&'()*+,;=:@"));
    EXPECT_EQ(stringByStrippingHTML(QStringLiteral("<p>a <b>b</b> <> c<br/>\n<a\nhref=x>d</a> <unclosed")),
              QStringLiteral("a b <> c\nd <unclosed"));
    EXPECT_EQ(siteSafeFileBase(QStringLiteral("a/b\\c")), QStringLiteral("a-b-c"));
    EXPECT_EQ(siteSafeFileBase(QStringLiteral("...")), QStringLiteral("_"));
    EXPECT_EQ(siteSafeFileBase(QStringLiteral("a\tb\x01")), QStringLiteral("ab"));
    EXPECT_EQ(ORVSiteTemplateFilters::xmlEscaped(QStringLiteral("a<b>&\"'\x01")),
              QStringLiteral("a&lt;b&gt;&amp;&quot;&#39;"));
}

TEST(SiteText, UploadedImagesReplaceLocalPaths)
{
    QString html = QStringLiteral("<img src=\"media/1/a b.png\"><img SRC=\"media/1/a%20b.png\"><img src=\"c.png\">");
    MGTemplateMap values;
    values.insert(QStringLiteral("ext_cover"), QStringLiteral("media/1/a%20b.png"));
    values.insert(QStringLiteral("ext_other"), QStringLiteral("x"));
    replaceLocalImagesWithUploaded(html, values,
                                   {{QStringLiteral("media/1/a%20b.png"), QStringLiteral("https://h/a.png")}});
    EXPECT_EQ(html.count(QStringLiteral("=\"https://h/a.png\"")), 2);
    EXPECT_TRUE(html.contains(QStringLiteral("c.png")));
    EXPECT_EQ(*values.find(QStringLiteral("ext_cover"))->text(), QStringLiteral("https://h/a.png"));
    EXPECT_EQ(*values.find(QStringLiteral("ext_other"))->text(), QStringLiteral("x"));
}

TEST(SiteTheme, LookupIncludesAndOptions)
{
    installTestTheme(QStringLiteral("printvars"));
    // The user's theme first; the shipped default otherwise.
    EXPECT_TRUE(ORVSiteTheme::themePathForSkinName(QStringLiteral("printvars"))
                    .startsWith(ORVSiteTheme::userThemesDirectory()));
    const QString fallback = ORVSiteTheme::themePathForSkinName(QStringLiteral("no such theme"));
    EXPECT_TRUE(fallback.endsWith(QStringLiteral("/site-medium-like"))) << fallback.toStdString();
    EXPECT_TRUE(ORVSiteTheme::themePathWithName(QStringLiteral("../SiteThemes")).isEmpty());
    EXPECT_TRUE(ORVSiteTheme::themeNamesInDirectory(ORVSiteTheme::shippedThemesDirectory())
                    .contains(ORVSiteTheme::defaultThemeName()));

    const ORVSiteTheme theme(ORVSiteTheme::themePathWithName(QStringLiteral("printvars")));
    EXPECT_TRUE(theme.readFile(QStringLiteral("../printvars/header.html")).isEmpty());
    EXPECT_TRUE(theme.readFile(QStringLiteral("/etc/passwd")).isEmpty());
    const ORVSiteTheme::Config config = theme.config();
    EXPECT_TRUE(config.isCreateCategoriesPages); // absent: the default stays
    EXPECT_TRUE(config.isCreateTagsPages);
    EXPECT_TRUE(config.isCreateArchivesVarsToIndex);

    // A broken config.json is the same as none.
    QTemporaryDir dir;
    ASSERT_TRUE(orvotest::writeFile(dir.path() + QStringLiteral("/extensions/config.json"), "{\"isCreateTagsPages\":"));
    EXPECT_FALSE(ORVSiteTheme(dir.path()).config().isCreateTagsPages);
    EXPECT_EQ(ORVSiteTheme(dir.path()).readSkinContentByFileName(QStringLiteral("none.html")), QString());
}

TEST(SiteExtensions, MergingUserAndThemeDefinitions)
{
    installTestTheme(QStringLiteral("printvars"));
    ORVLibraryExtensionItem mine;
    mine.title = QStringLiteral("Mine");
    mine.variableName = QStringLiteral("tagline");
    ORVLibraryExtensionItem keep;
    keep.title = QStringLiteral("Keep");
    keep.variableName = QStringLiteral("keep");
    const QList<ORVLibraryExtensionItem> user{mine, keep};

    const auto merged = ORVLibraryExtensionItem::siteExtensionWithThemeName(QStringLiteral("printvars"), user);
    ASSERT_EQ(merged.size(), 3);
    EXPECT_EQ(merged[0].variableName, QStringLiteral("keep"));
    EXPECT_FALSE(merged[0].isThemeExtension);
    // The theme's "tagline" hides the user's, the first of two wins, and a
    // height of 0 reads as one line.
    EXPECT_EQ(merged[1].title, QStringLiteral("Tagline"));
    EXPECT_TRUE(merged[1].isThemeExtension);
    EXPECT_EQ(merged[1].inputFieldHeight(), 22);
    EXPECT_EQ(merged[2].variableName, QStringLiteral("other"));
    // A theme without extensions (or no such theme) gives the user's own.
    EXPECT_EQ(ORVLibraryExtensionItem::documentExtensionWithThemeName(QStringLiteral("printvars"), user), user);
    EXPECT_EQ(ORVLibraryExtensionItem::siteExtensionWithThemeName(QString(), user), user);

    // Round trip through the stored JSON, skipping what doesn't parse.
    const QString stored = ORVLibraryExtensionItem::jsonTextFromItems(user);
    EXPECT_EQ(ORVLibraryExtensionItem::itemsFromJsonText(stored), user);
    EXPECT_TRUE(ORVLibraryExtensionItem::itemsFromJsonText(QStringLiteral("[1,{\"title\":\"t\"}")).isEmpty());

    ORVLibraryExtensionItem edit = keep;
    EXPECT_EQ(ORVLibraryExtensionItem::validationErrorForItem(edit, merged, QStringLiteral("keep")), std::nullopt);
    edit.variableName = QStringLiteral("other");
    EXPECT_EQ(ORVLibraryExtensionItem::validationErrorForItem(edit, merged, QStringLiteral("keep")),
              QStringLiteral("This Template Variables Name is used!"));
    edit.title.clear();
    EXPECT_EQ(ORVLibraryExtensionItem::validationErrorForItem(edit, merged), QStringLiteral("Please fill Title!"));
}

TEST(SiteSettings, ValidationLeavesTheRowAsItWas)
{
    ORVDBCat cat;
    QString why;
    EXPECT_TRUE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("sitePageSize"), QStringLiteral("10"), &why));
    EXPECT_EQ(cat.sitePageSize(), 10);
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("sitePageSize"), QStringLiteral("ten"), &why));
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("siteListTextNum"), QStringLiteral("0"), &why));
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("siteSkinName"), QStringLiteral("nope"), &why));
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("siteBuildPath"), QStringLiteral("../x"), &why));
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("siteMainMenuData"),
                                                 QStringLiteral("[{\"name\":\"A\"}]"), &why));
    EXPECT_EQ(why, QStringLiteral("Please Fill URL!"));
    EXPECT_FALSE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("isEnableChart"), QStringLiteral("maybe"), &why));
    EXPECT_EQ(cat.sitePageSize(), 10);
    EXPECT_TRUE(cat.siteMainMenuData().isEmpty());
    EXPECT_TRUE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("isEnableChart"), QStringLiteral("on"), &why));
    EXPECT_TRUE(cat.isEnableChart());
    EXPECT_TRUE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("ext.tagline"), QStringLiteral("Hi"), &why));
    EXPECT_TRUE(ORVSiteSettings::setValueForKey(cat, QStringLiteral("ext.footer"), QStringLiteral("F"), &why));
    EXPECT_EQ(QJsonDocument::fromJson(cat.siteExtValue().toUtf8()).object(),
              (QJsonObject{{QStringLiteral("tagline"), QStringLiteral("Hi")}, {QStringLiteral("footer"), QStringLiteral("F")}}));
}

TEST(SitePublishScript, FileRoundTripAndPlaceholders)
{
    QTemporaryDir dir;
    ORVSitePublishScript script;
    script.beforeAction = 3;
    script.sh = ORVSitePublishScript::sampleScript();
    script.isShow = true;
    ASSERT_TRUE(script.writeToMetadataFolder(dir.path(), 42));
    EXPECT_TRUE(QFileInfo::exists(dir.path() + QStringLiteral("/publish-sh-42.data")));
    const auto read = ORVSitePublishScript::readFromMetadataFolder(dir.path(), 42);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->beforeAction, 3);
    EXPECT_EQ(read->sh, script.sh);
    EXPECT_TRUE(read->isShow);
    EXPECT_FALSE(ORVSitePublishScript::readFromMetadataFolder(dir.path(), 43));
    const QDateTime when(QDate(2024, 3, 5), QTime(7, 8, 9));
    EXPECT_EQ(ORVSitePublishScript::scriptByReplacingPlaceholders(
                  QStringLiteral("{{year}}-{{month}}-{{day}} {{time}} {{input}} {{x}}"), when, QStringLiteral("in")),
              QStringLiteral("2024-03-05 07:08:09 in {{x}}"));
}

namespace {

// One request to the server on 127.0.0.1, answered in full.
QByteArray fetch(quint16 port, const QByteArray &request)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    QByteArray answer;
    QEventLoop loop;
    QObject::connect(&socket, &QTcpSocket::connected, [&] { socket.write(request); });
    QObject::connect(&socket, &QTcpSocket::readyRead, [&] { answer += socket.readAll(); });
    QObject::connect(&socket, &QTcpSocket::disconnected, &loop, &QEventLoop::quit);
    QTimer::singleShot(10000, &loop, &QEventLoop::quit);
    loop.exec();
    return answer;
}

} // namespace

TEST(SiteServer, ServesTheFolderOnLoopbackOnly)
{
    QTemporaryDir dir;
    const QString root = dir.path() + QStringLiteral("/site");
    ASSERT_TRUE(orvotest::writeFile(root + QStringLiteral("/index.html"), "<p>home</p>"));
    ASSERT_TRUE(orvotest::writeFile(root + QStringLiteral("/tag_a b.html"), "tag"));
    ASSERT_TRUE(orvotest::writeFile(dir.path() + QStringLiteral("/secret.txt"), "secret"));
    ORVSiteStaticServer server(root);
    QString why;
    ASSERT_TRUE(server.listen(0, &why)) << why.toStdString();

    const QByteArray home = fetch(server.port(), "GET / HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_TRUE(home.startsWith("HTTP/1.1 200 OK\r\n"));
    EXPECT_TRUE(home.contains("Content-Type: text/html; charset=utf-8"));
    EXPECT_TRUE(home.endsWith("<p>home</p>"));
    EXPECT_TRUE(fetch(server.port(), "GET /tag_a%20b.html?x=1 HTTP/1.1\r\n\r\n").endsWith("\r\n\r\ntag"));
    EXPECT_TRUE(fetch(server.port(), "GET /../secret.txt HTTP/1.1\r\n\r\n").startsWith("HTTP/1.1 404"));
    EXPECT_TRUE(fetch(server.port(), "GET /%2e%2e/secret.txt HTTP/1.1\r\n\r\n").startsWith("HTTP/1.1 404"));
    EXPECT_TRUE(fetch(server.port(), "POST / HTTP/1.1\r\n\r\n").startsWith("HTTP/1.1 405"));
    const QByteArray head = fetch(server.port(), "HEAD / HTTP/1.1\r\n\r\n");
    EXPECT_TRUE(head.startsWith("HTTP/1.1 200") && head.endsWith("\r\n\r\n"));
}
