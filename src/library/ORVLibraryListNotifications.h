#pragma once

#include <QString>

// Names of the notifications of the document list and the document
// operations (ORVNotificationCenter).

// The list's rows changed (a document was made, imported, trashed...): the
// list view reloads. userInfo "dbURL" names the library's database.
inline const QString kORVListViewControllerReloadTableViewNotification =
    QStringLiteral("kORVListViewControllerReloadTableViewNotification");
// A document was deleted for good; userInfo "url" holds its file's former path.
inline const QString kORVListViewControllerDeleteDocumentNotification =
    QStringLiteral("kORVListViewControllerDeleteDocumentNotification");
// A top category became a site (On) or a plain category (Off); userInfo "uuid".
inline const QString ORVCatEditSiteChangeCatTypeOnNotification =
    QStringLiteral("ORVCatEditSiteChangeCatTypeOnNotification");
inline const QString ORVCatEditSiteChangeCatTypeOffNotification =
    QStringLiteral("ORVCatEditSiteChangeCatTypeOffNotification");
