#include "library/ORVDocumentDropHandler.h"

#include "core/ORVNotificationCenter.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryNotifications.h"
#include "library/ORVLibraryTree.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

ORVDocumentDropHandler::ORVDocumentDropHandler(ORVLibraryTree &tree) : m_tree(tree) {}

ORVDocumentDropOperation ORVDocumentDropHandler::operationWithModifiers(bool option, bool command)
{
    if (option)
        return ORVDocumentDropOperation::Remove;
    return command ? ORVDocumentDropOperation::Copy : ORVDocumentDropOperation::Move;
}

QByteArray ORVDocumentDropHandler::pasteboardDataWithRecords(const QList<ORVLibraryDocDragRecord> &records)
{
    QJsonArray array;
    for (const ORVLibraryDocDragRecord &r : records)
        array.append(QJsonObject{{QStringLiteral("uuid"), r.uuid}, {QStringLiteral("state"), r.state}});
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QList<ORVLibraryDocDragRecord> ORVDocumentDropHandler::recordsWithPasteboardData(const QByteArray &data)
{
    QList<ORVLibraryDocDragRecord> records;
    for (const QJsonValue &v : QJsonDocument::fromJson(data).array()) {
        const QJsonObject o = v.toObject();
        const qint64 uuid = o.value(QStringLiteral("uuid")).toInteger();
        if (uuid <= 0)
            continue;
        records.append({uuid, o.value(QStringLiteral("state")).toInt(1)});
    }
    return records;
}

bool ORVDocumentDropHandler::validateDocumentsDrop(const ORVCatTreeItem &target)
{
    return target.catType == ORVCatType::Trash || target.catType == ORVCatType::Tag ||
           ORVDBCat::checkCatTypeIsDBCatItem(target.catType);
}

namespace {

template <typename T>
void addIfAbsent(QList<T> &list, const T &value)
{
    if (!list.contains(value))
        list << value;
}

} // namespace

bool ORVDocumentDropHandler::acceptDocumentsDrop(const QList<ORVLibraryDocDragRecord> &records,
                                                 const ORVCatTreeItem &target, ORVDocumentDropOperation operation,
                                                 const ShownList &shown)
{
    if (!validateDocumentsDrop(target))
        return false;
    ORVDBManager &m = *m_tree.manager();
    const bool toTrash = target.catType == ORVCatType::Trash;
    const bool toTag = target.catType == ORVCatType::Tag;
    const bool showsCategory = !shown.isFetchTag && shown.fetchUUID > 1000;
    bool changed = false;
    m.performInTransaction([&](FMDatabase &) {
        for (const ORVLibraryDocDragRecord &record : records) {
            // The document as it is now, not as it was when the drag began.
            const auto art = m.itemDBArticleWithUUID(record.uuid);
            if (!art)
                continue;
            if (toTrash) {
                changed = m.updateDBArticleWithState(*art, ORVDBArticle::StateTrash) || changed;
                continue;
            }
            const bool wasInTrash = art->state() == ORVDBArticle::StateTrash;
            if (wasInTrash)
                changed = m.updateDBArticleWithState(*art, ORVDBArticle::StateNormal) || changed;
            if (toTag) {
                QStringList names = m.articleTagsNamesByArticleUUID(art->uuid());
                const QStringList before = names;
                if (wasInTrash || operation == ORVDocumentDropOperation::Copy) {
                    addIfAbsent(names, target.name);
                } else if (operation == ORVDocumentDropOperation::Remove) {
                    names.removeAll(target.name);
                } else {
                    if (shown.isFetchTag)
                        names.removeAll(shown.fetchTagName);
                    addIfAbsent(names, target.name);
                }
                if (names != before)
                    changed = m.updateDBArticleWithTagNames(*art, names) || changed;
            } else {
                QList<qint64> cats = m.articleCatsIIDSByArticleUUID(art->uuid());
                const QList<qint64> before = cats;
                if (wasInTrash || operation == ORVDocumentDropOperation::Copy) {
                    addIfAbsent(cats, target.uuid);
                } else if (operation == ORVDocumentDropOperation::Remove) {
                    cats.removeAll(target.uuid);
                } else {
                    if (showsCategory)
                        cats.removeAll(shown.fetchUUID);
                    addIfAbsent(cats, target.uuid);
                }
                if (cats != before)
                    changed = m.updateDBArticleWithCatIIDS(*art, cats) || changed;
            }
        }
    });
    if (toTag)
        m_tree.updateLibraryTreeTagsData();
    if (changed)
        ORVNotificationCenter::defaultCenter()->postNotification(kORVLibraryDocumentCategoriesDidChangeNotification,
                                                                 &m_tree, {{QStringLiteral("dbURL"), m.dbURL()}});
    const bool isShownEntry = shown.isFetchTag ? (toTag && target.uuid == shown.fetchUUID)
                                               : (!toTag && target.uuid == shown.fetchUUID);
    if (toTrash || isShownEntry)
        ORVNotificationCenter::defaultCenter()->postNotification(kORVTreeViewControllerReloadOutlineViewNotification,
                                                                 &m_tree);
    return true;
}
