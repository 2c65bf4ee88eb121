#pragma once

#include <QString>

// The user's trash (the freedesktop trash, as the file manager shows it).
// Files that Orvo throws away go there, never out of existence: the trash is
// the user's last way back.
class ORVSystemTrash
{
public:
    // moveFileOrDirToTrashWithPath:. Moves a file or a folder with its
    // content. False, with a reason, when the path does not exist or the
    // trash cannot take it (for instance a volume without a trash folder);
    // the path is then left where it was.
    static bool moveFileOrDirToTrashWithPath(const QString &path, QString *error = nullptr,
                                             QString *pathInTrash = nullptr);
};
