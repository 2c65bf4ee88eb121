// orvo site ... end to end, on a library made in a temporary folder.

#include "site/SiteTestSupport.h"

using namespace sitetest;

namespace {

QString text(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes);
}

} // namespace

TEST(SiteCli, ListSettingsBuildAndFailure)
{
    SiteLibrary lib;
    const qint64 site = lib.addCategory(QStringLiteral("My Blog"));
    const qint64 plain = lib.addCategory(QStringLiteral("Notes"), 0, QString(), ORVCatType::TopCategory);
    const qint64 sub = lib.addCategory(QStringLiteral("Travel"), site);
    lib.addPost(QStringLiteral("# Hello world\n\nFirst post.\n"), {sub}, {QStringLiteral("intro")});
    QByteArray out, err;

    ASSERT_EQ(orvotest::runOrvo({QStringLiteral("site"), QStringLiteral("list"), QStringLiteral("--library"), lib.path},
                                &out, &err),
              0)
        << err.toStdString();
    EXPECT_TRUE(text(out).contains(QStringLiteral("%1\tMy Blog\tnever built").arg(site))) << out.toStdString();
    EXPECT_FALSE(text(out).contains(QStringLiteral("Notes")));

    const QStringList lib2{QStringLiteral("--library"), lib.path};
    EXPECT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("settings"), QString::number(site),
                                            QStringLiteral("siteName"), QStringLiteral("Travels")} + lib2,
                                &out, &err),
              0)
        << err.toStdString();
    EXPECT_TRUE(text(out).contains(QStringLiteral("siteName\tTravels\n")));
    EXPECT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("settings"), QString::number(site),
                                            QStringLiteral("sitePageSize"), QStringLiteral("-3")} + lib2,
                                &out, &err),
              1);
    EXPECT_TRUE(text(err).startsWith(QStringLiteral("orvo: sitePageSize")));
    EXPECT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("settings"), QString::number(plain)} +
                                    lib2,
                                &out, &err),
              1);
    EXPECT_TRUE(text(err).contains(QStringLiteral("is not a site")));

    // A build by the name of the site, into a folder of our choosing.
    const QString base = lib.dir.path() + QStringLiteral("/sites");
    ASSERT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("build"), QStringLiteral("my blog"),
                                            QStringLiteral("--clear"), QStringLiteral("--output"), base} + lib2,
                                &out, &err),
              0)
        << err.toStdString();
    const QString folder = base + QStringLiteral("/My Blog");
    EXPECT_EQ(text(out).trimmed(), folder);
    const QString index = text(orvotest::readFile(folder + QStringLiteral("/index.html")));
    EXPECT_TRUE(index.contains(QStringLiteral("<title>Travels</title>"))) << index.left(400).toStdString();
    EXPECT_TRUE(index.contains(QStringLiteral("Hello world")));
    EXPECT_TRUE(QFileInfo::exists(folder + QStringLiteral("/Travel.html")));
    EXPECT_TRUE(QFileInfo::exists(folder + QStringLiteral("/tag_intro.html")));
    EXPECT_TRUE(QFileInfo::exists(folder + QStringLiteral("/asset/css/style.css")));
    EXPECT_GT(lib.manager->itemDBCatWithUUID(site)->siteLastBuildDate(), 1000);

    // A theme with a template error fails the build with the engine's message.
    const QString broken = QDir(ORVSiteTheme::userThemesDirectory()).filePath(QStringLiteral("broken"));
    ASSERT_TRUE(orvotest::writeFile(broken + QStringLiteral("/post.html"), "{% for x in %}{{ post.nothing }}"));
    ASSERT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("themes")} + lib2, &out, &err), 0);
    EXPECT_TRUE(text(out).contains(QStringLiteral("site-medium-like\tshipped")));
    EXPECT_TRUE(text(out).contains(QStringLiteral("broken\tuser")));
    ASSERT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("settings"), QString::number(sub),
                                            QStringLiteral("siteSkinName"), QStringLiteral("broken")} + lib2,
                                &out, &err),
              0);
    EXPECT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("build"), QString::number(site),
                                            QStringLiteral("--output"), base} + lib2,
                                &out, &err),
              1);
    EXPECT_TRUE(text(err).startsWith(QStringLiteral("Build Site Errors!\norvo: post.html: "))) << err.toStdString();
    EXPECT_TRUE(text(orvotest::readFile(folder + QStringLiteral("/index.html"))).contains(QStringLiteral("Hello world")));

    EXPECT_EQ(orvotest::runOrvo(QStringList{QStringLiteral("site"), QStringLiteral("serve")} + lib2, &out, &err), 2);
}
