#pragma once

#include <QList>
#include <QString>

// One plain file of a folder as the folder lists it.
struct ORVFolderFileEntry {
    QString name;      // the file name, decoded from the file system's bytes
    quint64 fileNumber; // its number on the volume (inode)
};

// The plain files of a folder, without its hidden ones ("." in front) and
// without descending into subfolders, in the order the folder lists them.
// A symbolic link counts when it points at a plain file. Read with one
// readdir pass, with no stat per file where the file system tells the type
// itself: folders of thousands of documents are listed on every list reload.
// Empty when the folder cannot be read.
QList<ORVFolderFileEntry> orvoListFolderFiles(const QString &folder);
