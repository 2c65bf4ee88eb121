#pragma once

// Libraries made in a temporary folder for site builds, and readers of the
// output the test theme "printvars" writes (lines "KEY=value", values of
// lists and maps as JSON).

#include "support/TestEnv.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "site/ORVSiteBuilder.h"
#include "site/ORVSiteTheme.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace sitetest {

// Copies a test theme of tests/data/site/themes into the user's themes.
inline void installTestTheme(const QString &name)
{
    const QString from = orvotest::dataDir() + QStringLiteral("/site/themes/") + name;
    const QString to = QDir(ORVSiteTheme::userThemesDirectory()).filePath(name);
    QDir(to).removeRecursively();
    const std::function<void(const QString &, const QString &)> copy = [&](const QString &a, const QString &b) {
        QDir().mkpath(b);
        for (const QFileInfo &fi : QDir(a).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            if (fi.isDir())
                copy(fi.filePath(), QDir(b).filePath(fi.fileName()));
            else
                QFile::copy(fi.filePath(), QDir(b).filePath(fi.fileName()));
        }
    };
    copy(from, to);
}

class SiteLibrary
{
public:
    SiteLibrary()
    {
        path = dir.path() + QStringLiteral("/lib");
        QString error;
        EXPECT_TRUE(ORVLibraryFolder::libraryModeSetupMainDatabase(path, QStringLiteral("# Welcome\n"), &error))
            << error.toStdString();
        manager = std::make_shared<ORVDBManager>(ORVLibraryFolder::databasePath(path));
        outputBase = dir.path() + QStringLiteral("/out");
    }

    // A category; a top category is a site unless told otherwise.
    qint64 addCategory(const QString &name, qint64 pid = 0, const QString &docName = QString(), int catType = -1)
    {
        ORVDBCat cat;
        cat.setUuid(++nextUUID);
        cat.setPid(pid);
        cat.setName(name);
        cat.setDocName(docName);
        cat.setCatType(catType >= 0 ? catType : (pid == 0 ? ORVCatType::SiteCategory : ORVCatType::SubCategory));
        cat.setSort(nextUUID);
        EXPECT_TRUE(manager->insertItemDBCat(cat));
        return cat.uuid();
    }

    struct Doc {
        QString text;
        QList<qint64> cats;
        QStringList tags;
        int type = 0;
        QString docName;
        qint64 dateArt = 0; // 0: ordered by creation, an hour apart
        qint64 dateModif = 0;
        QString postExtValue;
    };
    qint64 addDocument(const Doc &d)
    {
        ORVDBArticle art;
        art.setUuid(++nextUUID);
        art.setType(d.type);
        art.setState(ORVDBArticle::StateNormal);
        art.setSort(art.uuid());
        const qint64 base = 1600000000 + (art.uuid() % 100000) * 3600;
        art.setDateAdd(base);
        art.setDateArt(d.dateArt ? d.dateArt : base);
        art.setDateModif(d.dateModif ? d.dateModif : base);
        art.setDocName(d.docName);
        art.setPostExtValue(d.postExtValue);
        EXPECT_TRUE(orvotest::writeFile(ORVLibraryFolder::documentPath(path, art.uuid()), d.text.toUtf8()));
        EXPECT_TRUE(manager->insertItemDBArticle(art));
        EXPECT_TRUE(manager->updateDBArticleWithCatIIDS(art, d.cats));
        if (!d.tags.isEmpty()) {
            EXPECT_TRUE(manager->updateDBArticleWithTagNames(art, d.tags));
        }
        return art.uuid();
    }
    qint64 addPost(const QString &text, const QList<qint64> &cats, const QStringList &tags = {})
    {
        Doc d;
        d.text = text;
        d.cats = cats;
        d.tags = tags;
        return addDocument(d);
    }

    // Many documents at once, in one transaction (one insert at a time
    // syncs the disk for each), each in one category.
    void importDocuments(const QList<std::pair<QString, qint64>> &textsAndCategories)
    {
        FMDatabase db(ORVLibraryFolder::databasePath(path));
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeUpdate(QStringLiteral("BEGIN")));
        for (const auto &[text, cat] : textsAndCategories) {
            ORVDBArticle art;
            art.setUuid(++nextUUID);
            art.setState(ORVDBArticle::StateNormal);
            art.setSort(art.uuid());
            art.setDateAdd(1500000000 + art.uuid() % 1000000 * 60);
            art.setDateArt(art.dateAdd());
            art.setDateModif(art.dateAdd());
            // A plain write: syncing each of thousands of files would take longer than the test.
            QFile file(ORVLibraryFolder::documentPath(path, art.uuid()));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            ASSERT_EQ(file.write(text.toUtf8()), text.toUtf8().size());
            file.close();
            ASSERT_TRUE(manager->insertItemDBArticleWithDB(art, &db));
            ASSERT_TRUE(db.executeUpdate(QStringLiteral("INSERT INTO cat_article (rid, aid) VALUES (?, ?)"),
                                         {cat, art.uuid()}));
        }
        ASSERT_TRUE(db.executeUpdate(QStringLiteral("COMMIT")));
        db.close();
        manager->setAllRefetchFlags();
    }

    template <typename Change>
    void changeCategory(qint64 uuid, Change change)
    {
        std::optional<ORVDBCat> cat = manager->itemDBCatWithUUID(uuid);
        ASSERT_TRUE(cat);
        change(*cat);
        ASSERT_TRUE(manager->saveItemDBCat(*cat));
    }

    // One build; the builder stays for inspection.
    bool build(qint64 site, int type = 1)
    {
        builder = std::make_unique<ORVSiteBuilder>(manager, path, site, outputBase);
        EXPECT_TRUE(builder->isValid());
        return builder->buildSiteWithType(type);
    }
    QString out(const QString &name = QString()) const
    {
        return name.isEmpty() ? builder->outputURL() : QDir(builder->outputURL()).filePath(name);
    }
    bool has(const QString &name) const { return QFileInfo::exists(out(name)); }
    QString read(const QString &name) const { return QString::fromUtf8(orvotest::readFile(out(name))); }

    QTemporaryDir dir;
    QString path;
    QString outputBase;
    std::shared_ptr<ORVDBManager> manager;
    std::unique_ptr<ORVSiteBuilder> builder;
    qint64 nextUUID = 17000000000000;
};

// The value of the first line "KEY=..." of a printvars page ("" when absent).
inline QString line(const QString &page, const QString &key)
{
    const QString prefix = key + QLatin1Char('=');
    // Pages are parts joined with a blank, so a part's first line may start with one.
    for (const QString &l : page.split(QLatin1Char('\n'))) {
        const QString line = l.startsWith(QLatin1Char(' ')) ? l.mid(1) : l;
        if (line.startsWith(prefix))
            return line.mid(prefix.size());
    }
    return {};
}
inline QJsonValue json(const QString &page, const QString &key)
{
    const QString text = line(page, key);
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8());
    return doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object());
}

} // namespace sitetest
