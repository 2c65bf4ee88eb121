#include "library/folderEntries.h"

#include "library/supportedDocumentExt.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

ORVFolderEntries listFolderEntries(const QString &path)
{
    ORVFolderEntries result;
    DIR *d = opendir(QFile::encodeName(path).constData());
    if (!d) {
        result.error = QString::fromLocal8Bit(std::strerror(errno));
        return result;
    }
    result.exists = true;
    while (const dirent *ent = readdir(d)) {
        const char *n = ent->d_name;
        if (n[0] == '.') // hidden entries, "." and ".."
            continue;
        unsigned char type = ent->d_type;
        if (type == DT_UNKNOWN || type == DT_LNK) {
            struct stat st;
            const int flags = type == DT_LNK ? 0 : AT_SYMLINK_NOFOLLOW;
            if (fstatat(dirfd(d), n, &st, flags) != 0)
                continue; // a dangling link
            if (type == DT_LNK) {
                // A link to a file counts as that file; a link to a folder
                // is not descended into.
                if (!S_ISREG(st.st_mode))
                    continue;
                type = DT_REG;
            } else {
                type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISREG(st.st_mode) ? DT_REG : DT_UNKNOWN;
            }
        }
        const QString name = QFile::decodeName(n);
        if (type == DT_DIR)
            result.folders.append(name);
        else if (type == DT_REG && checkIsSupportedDocumentWithPath(name))
            result.documents.append(name);
    }
    closedir(d);
    return result;
}
