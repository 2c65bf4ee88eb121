#pragma once

// What the organising commands (tree, doc, cat, tag, trash, search) share:
// the library's tree and list for one command, entries of the tree named
// on the command line, orders by name, and rows as text or JSON.
//
// Entries are named as the tree shows them:
//   inbox | recent | uncategorized | trash   the fixed entries
//   <number>                                  a category, by its id
//   tag:<name> | tag:<id>                     a tag

#include "cli/CliLibrary.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "library/ORVLibraryListController.h"
#include "library/ORVLibraryTree.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <ctime>

#include <memory>

namespace orvo::cli {

// The library of a command with its tree and list, as a window has them.
struct CommandOrganiser {
    CommandLibrary lib;
    std::unique_ptr<ORVLibraryTree> tree;
    std::unique_ptr<ORVLibraryListController> list;
};

// Opens the library (printing why it cannot) and makes its tree and list;
// the tree is loaded when asked.
inline std::optional<CommandOrganiser> openCommandOrganiser(Context &ctx, bool loadTree)
{
    auto lib = openCommandLibrary(ctx);
    if (!lib)
        return std::nullopt;
    AppDelegate *app = AppDelegate::sharedDelegate();
    CommandOrganiser o;
    o.lib = *lib;
    o.tree = std::make_unique<ORVLibraryTree>(o.lib.manager, app->libraryRecentDocumentManager());
    o.list = std::make_unique<ORVLibraryListController>(o.lib.manager, o.lib.path,
                                                        app->libraryRecentDocumentManager(), o.tree.get());
    o.list->options = ORVLibraryListOptions::fromPreferences(app->prfs());
    const QString path = o.lib.path;
    o.list->reloadUncategoriesDocuments = [path] {
        AppDelegate::sharedDelegate()->reloadUncategoriesDocumentToLibraryWithURL(path);
    };
    if (loadTree)
        o.tree->fetchLibraryTreeData();
    return o;
}

struct CommandEntry {
    qint64 uuid = 15; // a fixed entry's kind, a category's uuid or a tag's id
    bool isTag = false;
    QString name;
};

inline QString isoDate(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate);
}

// "yyyy-MM-dd HH:mm" in local time. Through the C library, which reads the
// time zone once, where a local QDateTime reads it for every row.
inline QString localDateText(qint64 seconds)
{
    const time_t t = time_t(seconds);
    tm local{};
    char text[32] = {};
    if (!localtime_r(&t, &local) || std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local) == 0)
        return isoDate(seconds);
    return QString::fromLatin1(text);
}

// Every tag of the library, also those no document carries.
inline QList<ORVCatTreeItemPtr> allTagItems(ORVDBManager &m)
{
    return m.getAllItemsTagsCatTreeItemWithDBIsLoadAll(nullptr, true);
}

// A tag by "name" (ignoring case) or id; nullopt with a reason.
inline std::optional<CommandEntry> tagEntry(ORVDBManager &m, const QString &nameOrID, QString *error)
{
    bool isNumber = false;
    const qint64 id = nameOrID.toLongLong(&isNumber);
    for (const ORVCatTreeItemPtr &tag : allTagItems(m))
        if ((isNumber && tag->uuid == id) || tag->name.compare(nameOrID, Qt::CaseInsensitive) == 0)
            return CommandEntry{tag->uuid, true, tag->name};
    *error = QStringLiteral("the library has no tag \"%1\"").arg(nameOrID);
    return std::nullopt;
}

// An entry of the tree as named on the command line (see the top of this
// file); nullopt with a reason naming what does not exist.
inline std::optional<CommandEntry> parseEntry(ORVDBManager &m, const QString &word, QString *error)
{
    static const QList<QPair<QString, qint64>> fixed = {{QStringLiteral("inbox"), ORVCatType::Inbox},
                                                        {QStringLiteral("recent"), ORVCatType::Recent},
                                                        {QStringLiteral("uncategorized"), ORVCatType::Uncategorized},
                                                        {QStringLiteral("trash"), ORVCatType::Trash}};
    for (const auto &[name, kind] : fixed)
        if (word.compare(name, Qt::CaseInsensitive) == 0)
            return CommandEntry{kind, false, name};
    if (word.startsWith(QLatin1String("tag:"), Qt::CaseInsensitive))
        return tagEntry(m, word.mid(4), error);
    bool ok = false;
    const qint64 uuid = word.toLongLong(&ok);
    if (!ok) {
        *error = QStringLiteral("\"%1\" names no entry of the tree (inbox, recent, uncategorized, trash, a category "
                                "id or tag:NAME)")
                     .arg(word);
        return std::nullopt;
    }
    const auto cat = uuid > 1000 ? m.itemDBCatWithUUID(uuid) : std::nullopt;
    if (!cat) {
        *error = QStringLiteral("the library has no category %1 (see 'orvo tree')").arg(word);
        return std::nullopt;
    }
    return CommandEntry{uuid, false, cat->name()};
}

// A category id that must exist; nullopt with a reason.
inline std::optional<ORVDBCat> existingCategory(ORVDBManager &m, const QString &word, QString *error)
{
    bool ok = false;
    const qint64 uuid = word.toLongLong(&ok);
    const auto cat = ok && uuid > 1000 ? m.itemDBCatWithUUID(uuid) : std::nullopt;
    if (!cat)
        *error = QStringLiteral("the library has no category %1 (see 'orvo tree')").arg(word);
    return cat;
}

// Orders by name or number: newest, oldest, manual, title, title-desc,
// modified, modified-oldest, or 0 to 6.
inline std::optional<quint64> parseListOrder(const QString &word)
{
    static const QStringList names = {QStringLiteral("newest"),   QStringLiteral("oldest"),
                                      QStringLiteral("manual"),   QStringLiteral("title"),
                                      QStringLiteral("title-desc"), QStringLiteral("modified"),
                                      QStringLiteral("modified-oldest")};
    const qsizetype i = names.indexOf(word.toLower());
    if (i >= 0)
        return quint64(i);
    bool ok = false;
    const uint n = word.toUInt(&ok);
    if (ok && n < uint(names.size()))
        return n;
    return std::nullopt;
}

inline QString listOrderName(quint64 order)
{
    static const QStringList names = {QStringLiteral("newest"), QStringLiteral("oldest"),   QStringLiteral("manual"),
                                      QStringLiteral("title"),  QStringLiteral("title-desc"), QStringLiteral("modified"),
                                      QStringLiteral("modified-oldest")};
    return order < quint64(names.size()) ? names.at(qsizetype(order)) : QString::number(order);
}

// The documents named by ids, each of which must exist; nullopt with a
// reason naming the first that does not.
inline std::optional<QList<ORVDBArticle>> existingDocuments(ORVDBManager &m, const QStringList &words,
                                                            QString *error)
{
    QList<ORVDBArticle> articles;
    for (const QString &word : words) {
        bool ok = false;
        const qint64 uuid = word.toLongLong(&ok);
        const auto art = ok ? m.itemDBArticleWithUUID(uuid) : std::nullopt;
        if (!art) {
            *error = QStringLiteral("the library has no document %1").arg(word);
            return std::nullopt;
        }
        articles << *art;
    }
    return articles;
}

// List rows for documents given by id, with their categories and tags.
inline QList<ORVLibraryListDataItem> rowsWithArticles(ORVDBManager &m, const QString &libraryPath,
                                                      const QList<ORVDBArticle> &articles)
{
    const auto cats = m.dicArticleCatsMaps();
    const auto tags = m.dicArticleTagsMaps();
    QList<ORVLibraryListDataItem> rows;
    for (const ORVDBArticle &a : articles)
        rows << ORVLibraryListDataItem::LibraryListDataItemWithDBArticle(a, cats, tags, libraryPath);
    return rows;
}

// One row of a listing as JSON: a group row, or a document with what a
// script needs of it.
inline QJsonObject rowJson(const ORVLibraryListDataItem &row, qsizetype index, bool grouped)
{
    if (row.isGroup)
        return QJsonObject{{QStringLiteral("row"), index},
                           {QStringLiteral("isGroup"), true},
                           {QStringLiteral("title"), row.title()},
                           {QStringLiteral("uuid"), row.groupCatUUID}};
    QJsonArray categories;
    for (qsizetype i = 0; i < row.catsIIDS.size() && i < row.cats.size(); ++i)
        categories.append(QJsonObject{{QStringLiteral("uuid"), row.catsIIDS.at(i)}, {QStringLiteral("name"), row.cats.at(i)}});
    QJsonObject o{
        {QStringLiteral("row"), index},
        {QStringLiteral("isGroup"), false},
        {QStringLiteral("uuid"), row.art.uuid()},
        {QStringLiteral("title"), row.title()},
        {QStringLiteral("summary"), row.content},
        {QStringLiteral("state"), row.art.state() == ORVDBArticle::StateTrash ? QStringLiteral("trash")
                                                                             : QStringLiteral("normal")},
        {QStringLiteral("sort"), row.art.sort()},
        {QStringLiteral("dateAdd"), isoDate(orvoSecondsFromStoredSeconds(row.art.dateAdd()))},
        {QStringLiteral("dateModif"), isoDate(row.modifDateSeconds())},
        {QStringLiteral("dateArt"), isoDate(row.addDateSeconds())},
        {QStringLiteral("categories"), categories},
        {QStringLiteral("tags"), QJsonArray::fromStringList(row.tags)},
        {QStringLiteral("path"), row.url},
    };
    if (grouped)
        o.insert(QStringLiteral("group"), row.groupCatUUID);
    return o;
}

inline void printJson(Context &ctx, const QJsonValue &value)
{
    ctx.out() << (value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject()))
                     .toJson(QJsonDocument::Indented);
}

// A listing as text: "== name ==" for a group row, "id  date  title" for a
// document (and its snippet or summary on the next line when asked).
inline void printRows(Context &ctx, const QList<ORVLibraryListDataItem> &rows, bool withContent)
{
    for (const ORVLibraryListDataItem &row : rows) {
        if (row.isGroup) {
            ctx.out() << "== " << row.title() << " ==\n";
            continue;
        }
        ctx.out() << row.art.uuid() << "  " << localDateText(row.addDateSeconds()) << "  " << row.title() << '\n';
        if (withContent && !row.content.isEmpty()) {
            // A line of a terminal's width, not a page of text.
            constexpr qsizetype kShownContent = 160;
            QString shown = row.content.simplified();
            if (shown.size() > kShownContent)
                shown = shown.left(kShownContent) + QStringLiteral("…");
            ctx.out() << "    " << shown << '\n';
        }
    }
}

} // namespace orvo::cli
