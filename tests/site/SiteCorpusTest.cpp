// The whole tldr corpus built as one site with the shipped theme: every
// internal link and source of every page must reach a file of the site.

#include "site/SiteTestSupport.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>
#include <QXmlStreamReader>

using namespace sitetest;

TEST(SiteCorpus, TldrSiteWithTheShippedThemeHasNoBrokenInternalLinks)
{
    const QString corpus = orvotest::corpusDir();
    if (corpus.isEmpty())
        GTEST_SKIP() << "no corpus";
    const QString pages = corpus + QStringLiteral("/tldr/pages");
    SiteLibrary lib;
    const qint64 site = lib.addCategory(QStringLiteral("tldr"));
    lib.changeCategory(site, [](ORVDBCat &c) {
        c.setSitePageSize(10);
        c.setSiteName(QStringLiteral("tldr pages"));
        c.setSiteURL(QStringLiteral("https://tldr.example.org"));
        c.setSiteMainMenuData(QStringLiteral("[{\"name\":\"Home\",\"url\":\"index.html\"},"
                                             "{\"name\":\"Archives\",\"url\":\"archives.html\"},"
                                             "{\"name\":\"Elsewhere\",\"url\":\"https://tldr.sh\",\"target\":true}]"));
    });
    QList<std::pair<QString, qint64>> docs;
    for (const QString &platform : QDir(pages).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        const qint64 cat = lib.addCategory(platform, site);
        for (const QFileInfo &fi : QDir(pages + QLatin1Char('/') + platform).entryInfoList({QStringLiteral("*.md")},
                                                                                               QDir::Files | QDir::Hidden))
            docs.append({QString::fromUtf8(orvotest::readFile(fi.filePath())), cat});
    }
    ASSERT_EQ(docs.size(), 7425); // "..md" among them
    lib.importDocuments(docs);
    ASSERT_TRUE(lib.build(site));
    ASSERT_TRUE(lib.builder->errorArray().isEmpty()) << lib.builder->errorArray().first().description().toStdString();

    const QString root = lib.out();
    static const QRegularExpression attribute(QStringLiteral("(?:href|src)=\"([^\"]*)\""));
    int checked = 0;
    QStringList broken;
    QDirIterator it(root, {QStringLiteral("*.html")}, QDir::Files);
    while (it.hasNext()) {
        const QString file = it.next();
        const QString html = QString::fromUtf8(orvotest::readFile(file));
        for (auto m = attribute.globalMatch(html); m.hasNext();) {
            QString target = m.next().captured(1);
            if (target.isEmpty() || target.startsWith(QLatin1Char('#')) || target.contains(QLatin1String("://")) ||
                target.startsWith(QLatin1String("mailto:")))
                continue;
            target = target.section(QLatin1Char('#'), 0, 0).section(QLatin1Char('?'), 0, 0);
            const QString decoded = QUrl::fromPercentEncoding(target.toUtf8());
            ++checked;
            if (!QFileInfo(QDir(root).filePath(decoded)).isFile() && broken.size() < 20)
                broken.append(QFileInfo(file).fileName() + QStringLiteral(" -> ") + target);
        }
    }
    EXPECT_TRUE(broken.isEmpty()) << broken.join(QLatin1Char('\n')).toStdString();
    EXPECT_GT(checked, 100000);

    // Lists, feeds and the sitemap.
    EXPECT_TRUE(QFileInfo::exists(root + QStringLiteral("/common_461.html")));
    EXPECT_TRUE(QFileInfo::exists(root + QStringLiteral("/all_742.html")));
    EXPECT_FALSE(QFileInfo::exists(root + QStringLiteral("/all_743.html")));
    for (const char *xml : {"atom.xml", "sitemap.xml"}) {
        QXmlStreamReader reader(orvotest::readFile(root + QLatin1Char('/') + QLatin1String(xml)));
        int elements = 0;
        while (!reader.atEnd())
            elements += reader.readNext() == QXmlStreamReader::StartElement;
        EXPECT_FALSE(reader.hasError()) << xml << ": " << reader.errorString().toStdString();
        EXPECT_GT(elements, 20) << xml;
    }
}
