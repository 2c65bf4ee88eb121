#pragma once

// A real library in a temporary folder (mainlib.db with the schema, docs/),
// built through the store's operations, for the organising tests.
#include "core/date_uuid.h"
#include "library/FMDatabase.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVLibraryListDataItem.h"
#include "support/TestEnv.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

class LibraryFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        lib = dir.filePath(QStringLiteral("lib"));
        ASSERT_TRUE(QDir().mkpath(lib + QStringLiteral("/docs")));
        FMDatabase db(ORVLibraryFolder::databasePath(lib));
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeStatements(ORVDBManager::schemaStatement())) << qPrintable(db.lastErrorMessage());
        db.close();
        manager = std::make_shared<ORVDBManager>(ORVLibraryFolder::databasePath(lib));
    }

    // A category; top (12) when pid is 0 unless a kind is given, else 13.
    ORVDBCat addCat(const QString &name, qint64 pid = 0, qint64 sort = 10, int kind = 0)
    {
        ORVDBCat c;
        c.setUuid(nowDateUUID());
        c.setPid(pid);
        c.setName(name);
        c.setSort(sort);
        c.setCatType(kind ? kind : (pid == 0 ? ORVCatType::TopCategory : ORVCatType::SubCategory));
        EXPECT_TRUE(manager->insertItemDBCat(c));
        return c;
    }

    // A document with its file; dates in seconds (dateArt is the date shown).
    ORVDBArticle addDoc(const QByteArray &text, const QList<qint64> &cats = {}, qint64 dateArt = 1700000000,
                        qint64 dateModif = 1700000000, int state = ORVDBArticle::StateNormal)
    {
        ORVDBArticle a;
        a.setUuid(nowDateUUID());
        a.setState(state);
        a.setSort(a.uuid());
        a.setDateAdd(dateArt);
        a.setDateArt(dateArt);
        a.setDateModif(dateModif);
        EXPECT_TRUE(orvotest::writeFile(docPath(a.uuid()), text));
        EXPECT_TRUE(manager->insertItemDBArticle(a));
        if (!cats.isEmpty()) {
            EXPECT_TRUE(manager->updateDBArticleWithCatIIDS(a, cats));
        }
        return a;
    }

    QString docPath(qint64 uuid) const { return ORVLibraryFolder::documentPath(lib, uuid); }
    QString docs() const { return lib + QStringLiteral("/docs"); }

    // The freedesktop trash of the test's user (the test main moved HOME).
    QString trashFiles() const
    {
        return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/Trash/files");
    }

    QVariant scalar(const QString &sql, const QVariantList &args = {})
    {
        FMDatabase db(ORVLibraryFolder::databasePath(lib));
        EXPECT_TRUE(db.open());
        FMResultSet rs = db.executeQuery(sql, args);
        return rs.next() ? rs.objectForColumn(0) : QVariant();
    }

    void exec(const QString &sql, const QVariantList &args = {})
    {
        FMDatabase db(ORVLibraryFolder::databasePath(lib));
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeUpdate(sql, args)) << qPrintable(db.lastErrorMessage());
    }

    static QList<qint64> uuids(const QList<ORVLibraryListDataItem> &rows)
    {
        QList<qint64> ids;
        for (const auto &r : rows)
            ids << (r.isGroup ? -r.groupCatUUID : r.art.uuid());
        return ids;
    }
    static QStringList titles(const QList<ORVLibraryListDataItem> &rows)
    {
        QStringList t;
        for (const auto &r : rows)
            t << (r.isGroup ? QStringLiteral("== ") + r.title() : r.title());
        return t;
    }

    QTemporaryDir dir;
    QString lib;
    std::shared_ptr<ORVDBManager> manager;
};
