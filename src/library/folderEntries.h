#pragma once

#include <QString>
#include <QStringList>

// What one folder holds, as the external tree and lists see it: the names
// of its sub-folders (hidden ones, starting with ".", and symbolic links
// left out, so a walk never leaves the folder nor loops) and the names of its
// documents (files, or links to files, with a supported extension). Names are
// in the order the system lists them. `exists` is false when the folder
// cannot be read; `error` then says why.
struct ORVFolderEntries {
    bool exists = false;
    QString error;
    QStringList folders;
    QStringList documents;
};

ORVFolderEntries listFolderEntries(const QString &path);
