// End-to-end: organising a library through the `orvo` binary, each test
// with a user of its own (HOME and XDG folders) and a library of its own.
#include "support/TestEnv.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class OrganiseCli : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            saved.insert(name, qgetenv(name));
        qputenv("HOME", home.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral(".config")).toUtf8());
        qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral(".local/share")).toUtf8());
        qputenv("XDG_CACHE_HOME", home.filePath(QStringLiteral(".cache")).toUtf8());
        lib = home.filePath(QStringLiteral("Library"));
        ASSERT_EQ(orvo({"library", "init", lib}).code, 0);
    }
    void TearDown() override
    {
        for (auto it = saved.begin(); it != saved.end(); ++it)
            qputenv(it.key(), it.value());
    }

    struct Run {
        int code = -1;
        QString out;
        QString err;
    };
    Run orvo(const QStringList &args)
    {
        QByteArray out, err;
        Run r;
        r.code = orvotest::runOrvo(args, &out, &err);
        r.out = QString::fromUtf8(out);
        r.err = QString::fromUtf8(err);
        return r;
    }
    QJsonValue json(const QStringList &args)
    {
        const Run r = orvo(args + QStringList{"--json"});
        EXPECT_EQ(r.code, 0) << qPrintable(args.join(' ')) << ": " << qPrintable(r.err);
        const QJsonDocument doc = QJsonDocument::fromJson(r.out.toUtf8());
        return doc.isArray() ? QJsonValue(doc.array()) : QJsonValue(doc.object());
    }
    QString newCat(const QStringList &args) { return QString::number(json(QStringList{"cat", "new"} + args).toObject().value("uuid").toInteger()); }
    QStringList listTitles(const QStringList &args)
    {
        QStringList titles;
        for (const QJsonValue &v : json(QStringList{"doc", "list"} + args).toArray())
            titles << (v.toObject().value("isGroup").toBool() ? "== " : "") + v.toObject().value("title").toString();
        return titles;
    }
    QString write(const QString &relative, const QByteArray &content)
    {
        const QString path = home.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        EXPECT_TRUE(orvotest::writeFile(path, content));
        return path;
    }
    QString uuidOf(const QString &title)
    {
        for (const QJsonValue &v : json({"doc", "list", "inbox"}).toArray())
            if (v.toObject().value("title").toString() == title)
                return QString::number(v.toObject().value("uuid").toInteger());
        return {};
    }

    QTemporaryDir home;
    QString lib;
    QMap<QByteArray, QByteArray> saved;
};

} // namespace

TEST_F(OrganiseCli, ImportListOrderAndCountAcrossCategories)
{
    const QString notes = newCat({"Notes"});
    const QString sub = newCat({"Drafts", "--parent", notes});
    write("in/chapter 10.md", "# Chapter 10\n![fig](img/fig.png)\n");
    write("in/chapter 9.md", "# Chapter 9\nbody\n");
    write("in/img/fig.png", "PNG");
    const QJsonObject imported = json({"doc", "import", "--cat", notes, home.filePath("in")}).toObject();
    ASSERT_EQ(imported.value("imported").toArray().size(), 2);
    const QString drafted = QString::number(json({"doc", "new", "--cat", sub, "--title", "Draft 2"}).toObject().value("uuid").toInteger());

    // The link now points into the document's media folder, where the image is.
    const QString ch10 = uuidOf("Chapter 10");
    ASSERT_FALSE(ch10.isEmpty());
    EXPECT_EQ(orvotest::readFile(lib + "/docs/" + ch10 + ".md"), ("# Chapter 10\n![fig](media/" + ch10 + "/fig.png)\n").toUtf8());
    EXPECT_EQ(orvotest::readFile(lib + "/docs/media/" + ch10 + "/fig.png"), QByteArray("PNG"));

    EXPECT_EQ(listTitles({notes, "--sort", "title"}), QStringList({"Chapter 9", "Chapter 10", "Draft 2"}));
    EXPECT_EQ(listTitles({notes, "--sort", "title", "--group"}),
              QStringList({"== Notes", "Chapter 9", "Chapter 10", "== Drafts", "Draft 2"}));
    EXPECT_EQ(listTitles({sub}), QStringList({"Draft 2"}));

    const QJsonObject tree = json({"tree"}).toObject();
    QMap<QString, qint64> counts;
    for (const QJsonValue &v : tree.value("children").toArray())
        counts.insert(v.toObject().value("name").toString(), v.toObject().value("count").toInteger());
    EXPECT_EQ(counts.value("Inbox"), 4); // the welcome document too
    EXPECT_EQ(counts.value("Notes"), 3);
    EXPECT_EQ(counts.value("Trash"), 0);

    // Trash, restore, and the final deletion only from the trash.
    const Run normalDelete = orvo({"doc", "delete", drafted});
    EXPECT_EQ(normalDelete.code, 1);
    EXPECT_TRUE(normalDelete.err.contains("is not in the trash")) << qPrintable(normalDelete.err);
    EXPECT_TRUE(QFileInfo::exists(lib + "/docs/" + drafted + ".md"));
    ASSERT_EQ(orvo({"doc", "trash", drafted, ch10}).code, 0);
    EXPECT_EQ(listTitles({"trash"}).size(), 2);
    EXPECT_EQ(listTitles({notes}).size(), 1);
    ASSERT_EQ(orvo({"doc", "restore", drafted}).code, 0);
    EXPECT_EQ(listTitles({sub}), QStringList({"Draft 2"})); // back in its category
    const QJsonObject emptied = json({"trash", "empty"}).toObject();
    EXPECT_EQ(emptied.value("deleted").toArray().size(), 1);
    EXPECT_FALSE(QFileInfo::exists(lib + "/docs/" + ch10 + ".md"));
    EXPECT_FALSE(QFileInfo::exists(lib + "/docs/media/" + ch10));
    bool inUserTrash = false;
    QDirIterator it(home.filePath(".local/share/Trash/files"), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        inUserTrash = orvotest::readFile(it.next()).startsWith("# Chapter 10") || inUserTrash;
    EXPECT_TRUE(inUserTrash);
}

TEST_F(OrganiseCli, DocumentsMoveBetweenCategoriesAndTagsAndAreFoundBySearch)
{
    const QString a = newCat({"A"});
    const QString b = newCat({"B"});
    const QString doc = QString::number(json({"doc", "new", "--cat", a, "--title", "Big cat notes"}).toObject().value("uuid").toInteger());
    write("extra.md", "# Other\nthe big dog\n");
    json({"doc", "import", home.filePath("extra.md")});

    ASSERT_EQ(orvo({"doc", "move", doc, "--to", b, "--from", a}).code, 0);
    EXPECT_EQ(listTitles({a}).size(), 0);
    EXPECT_EQ(listTitles({b}), QStringList({"Big cat notes"}));
    ASSERT_EQ(orvo({"doc", "move", doc, "--to", a, "--copy"}).code, 0);
    EXPECT_EQ(json({"doc", "cats", doc}).toObject().value("categories").toArray().size(), 2);
    EXPECT_EQ(json({"doc", "tags", doc, "--add", "pets", "--add", "wild"}).toObject().value("tags").toArray().size(), 2);
    EXPECT_EQ(listTitles({"tag:pets"}), QStringList({"Big cat notes"}));
    EXPECT_EQ(listTitles({"tag:pets", "--in", b}), QStringList({"Big cat notes"}));
    EXPECT_EQ(listTitles({"tag:pets", "--in", "uncategorized"}).size(), 0);

    const QJsonArray found = json({"search", "big", "cat"}).toArray();
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found.first().toObject().value("title").toString(), "Big cat notes");
    EXPECT_EQ(found.first().toObject().value("tags").toArray().size(), 2);
    EXPECT_EQ(json({"search", "-t", "wild"}).toArray().size(), 1);
    EXPECT_EQ(json({"search", "-c", "A", "notes"}).toArray().size(), 1);
    EXPECT_EQ(json({"search", "big", "dog"}).toArray().size(), 1);
    EXPECT_EQ(orvo({"search", "-t"}).code, 2);

    const QJsonArray inFolder = json({"search", "--folder", home.path(), "big", "dog"}).toArray();
    ASSERT_EQ(inFolder.size(), 2); // extra.md, and its copy inside the library's docs
    for (const QJsonValue &hit : inFolder) {
        EXPECT_TRUE(hit.toObject().value("realPath").toString().startsWith(home.path()));
        EXPECT_FALSE(hit.toObject().value("snippet").toString().isEmpty());
    }
    EXPECT_EQ(orvo({"doc", "link", doc}).out.trimmed(), "[Big cat notes](orvolib://" + doc + ")");

    ASSERT_EQ(orvo({"tag", "delete", "pets"}).code, 0);
    EXPECT_EQ(json({"doc", "tags", doc}).toObject().value("tags").toArray(), QJsonArray({"wild"}));

    const QJsonArray exported = json({"doc", "export", "--to", home.filePath("out"), doc, doc}).toObject().value("written").toArray();
    ASSERT_EQ(exported.size(), 2);
    EXPECT_TRUE(QFileInfo::exists(home.filePath("out/Big cat notes.md")));
    EXPECT_TRUE(QFileInfo::exists(home.filePath("out/Big cat notes-1.md")));
}

TEST_F(OrganiseCli, CategoriesMoveOrderAndReorderTheirDocuments)
{
    const QString top = newCat({"Top"});
    const QString site = newCat({"Site", "--site"});
    const QString child = newCat({"Child", "--parent", top});
    const QString d1 = QString::number(json({"doc", "new", "--cat", top, "--title", "One"}).toObject().value("uuid").toInteger());
    const QString d2 = QString::number(json({"doc", "new", "--cat", top, "--title", "Two"}).toObject().value("uuid").toInteger());

    // A reorder needs the manual order first.
    const Run refused = orvo({"doc", "reorder", top, d2});
    EXPECT_EQ(refused.code, 1);
    EXPECT_TRUE(refused.err.contains("manual")) << qPrintable(refused.err);
    ASSERT_EQ(orvo({"cat", "sort", child, "manual"}).code, 0); // goes to the top category
    EXPECT_EQ(orvo({"cat", "sort", top}).out.trimmed(), "manual");
    EXPECT_EQ(listTitles({top}), QStringList({"== Top", "Two", "One", "== Child"}));
    const QJsonArray reordered = json({"doc", "reorder", top, d2, "--at", "4"}).toArray();
    EXPECT_EQ(reordered.size(), 4);
    EXPECT_EQ(listTitles({top}), QStringList({"== Top", "One", "== Child", "Two"}));
    EXPECT_EQ(listTitles({child}), QStringList({"== Child", "Two"}));
    ASSERT_EQ(orvo({"doc", "reorder", top, d2, "--before", d1}).code, 0);
    EXPECT_EQ(listTitles({top}), QStringList({"== Top", "Two", "One", "== Child"}));

    // The site moved below a category loses its site kind.
    EXPECT_EQ(orvo({"cat", "site", site}).out.trimmed(), "on");
    ASSERT_EQ(orvo({"cat", "move", site, "--to", top}).code, 0);
    EXPECT_EQ(orvo({"cat", "site", site}).out.trimmed(), "off");
    EXPECT_EQ(orvo({"cat", "move", top, "--to", site}).code, 1); // not into its own subtree
    ASSERT_EQ(orvo({"cat", "move", site, "--to", "root", "--index", "0"}).code, 0);
    QStringList order;
    for (const QJsonValue &v : json({"tree"}).toObject().value("children").toArray())
        order << v.toObject().value("name").toString();
    EXPECT_EQ(order, QStringList({"Inbox", "Recent", "Uncategorized", "Trash", "Site", "Orvo", "Top"}));
    ASSERT_EQ(orvo({"cat", "rename", site, "Blog"}).code, 0);
    ASSERT_EQ(orvo({"cat", "delete", top}).code, 0);
    EXPECT_EQ(listTitles({"uncategorized"}), QStringList({"Two", "One"}));
}

TEST_F(OrganiseCli, BadInputIsNamedAndChangesNothing)
{
    const Run missing = orvo({"doc", "list", "1234567"});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.err.trimmed(), "orvo: the library has no category 1234567 (see 'orvo tree')");
    EXPECT_EQ(orvo({"doc", "import", "--cat", "99999999999", home.path()}).code, 1);
    write("empty/picture.png", "PNG");
    const Run nothing = orvo({"doc", "import", home.filePath("empty")});
    EXPECT_EQ(nothing.code, 1);
    EXPECT_EQ(nothing.err.trimmed(),
              "orvo: Can't import file, please make sure you choose's folder contain .txt, .md or .markdown file!");
    EXPECT_EQ(orvo({"doc", "trash", "42"}).code, 1);
    EXPECT_EQ(orvo({"doc", "list", "--sort", "sideways"}).code, 2);
    EXPECT_EQ(orvo({"doc", "list", "inbox", "--sort", "manual"}).code, 2);
    EXPECT_EQ(orvo({"cat", "site", "12345678901234", "on"}).code, 1);
    EXPECT_EQ(listTitles({}).size(), 1);

    // A document whose file is gone lists and searches without breaking anything.
    const QString welcome = QString::number(json({"doc", "list"}).toArray().first().toObject().value("uuid").toInteger());
    ASSERT_TRUE(QFile::remove(lib + "/docs/" + welcome + ".md"));
    EXPECT_EQ(listTitles({"--sort", "title"}), QStringList({""}));
    EXPECT_EQ(json({"search", "welcome"}).toArray().size(), 0);
}

TEST_F(OrganiseCli, CleanImagesListsOrphansAndTrashesThemOnlyWhenAsked)
{
    write("site/post.md", "![](a.png)");
    write("site/a.png", "A");
    write("site/img/b.png", "B");
    const Run listed = orvo({"clean-images", home.filePath("site")});
    EXPECT_EQ(listed.code, 0);
    EXPECT_EQ(listed.out, "img/b.png\n");
    EXPECT_TRUE(listed.err.contains("Found 1 Unreference Images."));
    EXPECT_TRUE(QFileInfo::exists(home.filePath("site/img/b.png")));
    const QJsonObject deleted = json({"clean-images", home.filePath("site"), "--delete"}).toObject();
    EXPECT_TRUE(deleted.value("images").toArray().first().toObject().value("trashed").toBool());
    EXPECT_FALSE(QFileInfo::exists(home.filePath("site/img/b.png")));
    EXPECT_TRUE(QFileInfo::exists(home.filePath("site/a.png")));
}
