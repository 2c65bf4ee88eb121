#pragma once

#include "library/ORVLibraryMediaItem.h"

#include <QList>
#include <QString>
#include <QStringList>

// Finds the images in a folder (and its subfolders) that no document in it
// refers to, so that the user can clean them up, and moves the chosen ones
// to the user's trash.
//
// An image counts as referred to when its bare file name, or that name
// percent-encoded as in a link, stands anywhere in a document's text,
// ignoring case: a name merely mentioned counts, and two images of one name
// in different folders protect each other. Documents are the files with an
// extension of supportedDocumentExt(); images those of imageExtensions.
// Hidden files and folders are left out.
//
// Thread: any; scanFolder reads only and may run on a worker.
class ORVUnReferenceImagesScanner
{
public:
    static const QStringList &imageExtensions();

    // doClearAction: the images of `folder` that no document refers to, by
    // path. Documents that cannot be read hold no reference.
    static QList<ORVLibraryMediaItem> scanFolder(const QString &folder);

    // deleteSelectionAction: moves every item's file to the user's trash.
    // Returns the paths moved; `errors` gets one sentence per file that
    // stayed.
    static QStringList moveItemsToTrash(const QList<ORVLibraryMediaItem> &items, QStringList *errors = nullptr);

    // The name as a link would write it: percent-encoded with the characters
    // allowed in a URL path left as they are.
    static QString urlEncodedFileName(const QString &name);
};
