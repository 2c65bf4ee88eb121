#include "platform/ORVSystemTrash.h"

#include <QFile>
#include <QFileInfo>

bool ORVSystemTrash::moveFileOrDirToTrashWithPath(const QString &path, QString *error, QString *pathInTrash)
{
    const QFileInfo fi(path);
    if (!fi.exists() && !fi.isSymLink()) {
        if (error)
            *error = QStringLiteral("%1 does not exist").arg(path);
        return false;
    }
    QFile file(path);
    if (!file.moveToTrash()) {
        if (error)
            *error = QStringLiteral("%1 could not be moved to the trash: %2").arg(path, file.errorString());
        return false;
    }
    // On success the file object names the path inside the trash.
    if (pathInTrash)
        *pathInTrash = file.fileName();
    return true;
}
