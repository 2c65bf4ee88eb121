#include "platform/TABFileMonitor.h"

#include <QFileInfo>

#include <sys/stat.h>

TABFileMonitor::TABFileMonitor(const QString &filePath, QObject *parent)
    : QObject(parent), m_path(QFileInfo(filePath).absoluteFilePath()), m_folder(QFileInfo(m_path).absolutePath())
{
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &TABFileMonitor::check);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &TABFileMonitor::check);
    m_last = snapshot();
    rearm();
}

TABFileMonitor::Snapshot TABFileMonitor::snapshot() const
{
    Snapshot s;
    struct stat st;
    if (::stat(QFile::encodeName(m_path).constData(), &st) != 0)
        return s;
    s.exists = true;
    s.inode = quint64(st.st_ino);
    s.size = qint64(st.st_size);
    s.modifiedNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    s.changedNs = qint64(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec;
    return s;
}

void TABFileMonitor::rearm()
{
    // A watch follows the file's inode: after a replace or a removal it is
    // gone, and the folder is watched until the path holds a file again.
    // While the file is there the folder is not watched, so that the
    // neighbours' traffic (SQLite's journal, say) costs nothing.
    const bool exists = QFileInfo::exists(m_path);
    const bool watchingFile = m_watcher.files().contains(m_path);
    const bool watchingFolder = m_watcher.directories().contains(m_folder);
    if (exists) {
        if (!watchingFile)
            m_watcher.addPath(m_path);
        if (watchingFolder)
            m_watcher.removePath(m_folder);
    } else {
        if (watchingFile)
            m_watcher.removePath(m_path);
        if (!watchingFolder && QFileInfo(m_folder).isDir())
            m_watcher.addPath(m_folder);
    }
}

void TABFileMonitor::check()
{
    const Snapshot now = snapshot();
    const Snapshot before = m_last;
    m_last = now;
    rearm();
    // The file may have been replaced between the event and this look; the
    // inode is then new even if size and time happen to match.
    if (!now.exists) {
        if (before.exists)
            emit didSeeChange(this, FileDeleted);
        return;
    }
    if (!before.exists || now.inode != before.inode || now.size != before.size ||
        now.modifiedNs != before.modifiedNs) {
        emit didSeeChange(this, ContentChanged);
        return;
    }
    // The inode time moved but the content time did not: a change of
    // permissions or owner. When neither moved, the event was a write within
    // the file system's time granularity (a few milliseconds on ext4), which
    // SQLite easily makes twice in a row; calling that a change of content
    // costs a reload at most, where missing it would leave stale data.
    emit didSeeChange(this, now.changedNs != before.changedNs ? AttributesChanged : ContentChanged);
}
