#include "library/folder_entries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <dirent.h>

QList<ORVFolderFileEntry> orvoListFolderFiles(const QString &folder)
{
    QList<ORVFolderFileEntry> entries;
    DIR *dir = ::opendir(QFile::encodeName(folder).constData());
    if (!dir)
        return entries;
    const QDir base(folder);
    while (const dirent *e = ::readdir(dir)) {
        if (e->d_name[0] == '.')
            continue;
        const QString name = QFile::decodeName(e->d_name);
        bool isFile = e->d_type == DT_REG;
        if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK)
            isFile = QFileInfo(base.filePath(name)).isFile(); // the file system does not say, or a link: ask
        if (isFile)
            entries.append({name, quint64(e->d_ino)});
    }
    ::closedir(dir);
    return entries;
}
