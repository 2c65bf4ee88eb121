#pragma once

#include <QString>

// Names of the library's notifications (ORVNotificationCenter).

// Posted by ORVDBManager when a document's state or categories, or a
// category's parent, changed; userInfo "dbURL" names the database. Listeners
// schedule a recount of the tree.
inline const QString kORVLibraryArticleCategoryDidChangeNotification =
    QStringLiteral("kORVLibraryArticleCategoryDidChangeNotification");
// The tree redraws its counts after a recount.
inline const QString kORVLibraryCategoryTreeNeedToUpdateNotification =
    QStringLiteral("kORVLibraryCategoryTreeNeedToUpdateNotification");
// A tree item was added, moved or removed; may carry "selected".
inline const QString kORVTreeViewControllerTreeControllerRearrangeObjectsNotification =
    QStringLiteral("kORVTreeViewControllerTreeControllerRearrangeObjectsNotification");
inline const QString kORVTreeViewControllerReloadOutlineViewNotification =
    QStringLiteral("kORVTreeViewControllerReloadOutlineViewNotification");
// A category's order changed; carries "uuid" and the order.
inline const QString kORVCatSortDidChangedNotification = QStringLiteral("kORVCatSortDidChangedNotification");
inline const QString kORVLibraryDocumentCategoriesDidChangeNotification =
    QStringLiteral("kORVLibraryDocumentCategoriesDidChangeNotification");
// A category or tag was deleted; carries its "uuid".
inline const QString kORVLibraryCategoryItemDidChangedNotification =
    QStringLiteral("kORVLibraryCategoryItemDidChangedNotification");
// The library was reloaded.
inline const QString kORVLibraryDidChangeNotification = QStringLiteral("kORVLibraryDidChangeNotification");
