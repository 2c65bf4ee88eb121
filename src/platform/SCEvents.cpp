#include "platform/SCEvents.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// What every folder of the tree is watched for. IN_EXCL_UNLINK keeps events
// of files that were unlinked but are still open from reaching us.
constexpr std::uint32_t kDirMask = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM |
                                   IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_EXCL_UNLINK | IN_ONLYDIR;
// What the ancestor is watched for while the watched folder is missing.
constexpr std::uint32_t kAnchorMask = IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

QString joinPath(const QString &dir, const QString &name)
{
    return dir.endsWith(QLatin1Char('/')) ? dir + name : dir + QLatin1Char('/') + name;
}

bool isSameOrBelow(const QString &path, const QString &base)
{
    if (path == base)
        return true;
    if (base.endsWith(QLatin1Char('/')))
        return path.startsWith(base);
    return path.size() > base.size() && path.startsWith(base) && path.at(base.size()) == QLatin1Char('/');
}

QString parentPath(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

bool isHiddenName(const QString &name) { return name.startsWith(QLatin1Char('.')); }

} // namespace

SCEvents::SCEvents(QObject *parent) : QObject(parent) { qRegisterMetaType<SCEvent>(); }

SCEvents::~SCEvents() { stopWatching(); }

bool SCEvents::startWatchingPath(const QString &path, QString *error)
{
    if (m_fd >= 0) {
        if (error)
            *error = QStringLiteral("already watching %1").arg(m_root);
        return false;
    }
    m_fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_fd < 0) {
        if (error)
            *error = QStringLiteral("cannot start watching files: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    }
    m_root = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    m_limitReported = false;
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SCEvents::readEvents);
    reanchor();
    return true;
}

void SCEvents::stopWatching()
{
    if (m_fd < 0)
        return;
    delete m_notifier;
    m_notifier = nullptr;
    // Closing the instance releases all of its watches at once.
    ::close(m_fd);
    m_fd = -1;
    m_dirs.clear();
    m_rootWd = -1;
    m_anchorWd = -1;
    m_anchorPath.clear();
    m_rootMissing = false;
}

qsizetype SCEvents::knownFileCount() const
{
    qsizetype n = 0;
    for (const WatchedDir &d : m_dirs)
        n += d.files.size();
    return n;
}

void SCEvents::emitEvent(const QString &path, std::uint32_t flags, std::uint32_t mask)
{
    if (flags == m_lastFlags && path == m_lastPath)
        return;
    m_lastPath = path;
    m_lastFlags = flags;
    emit eventOccurred(SCEvent{path, flags, mask});
}

int SCEvents::addDirWatch(const QString &path, QStringList *files, QStringList *subdirs)
{
    const QByteArray native = QFile::encodeName(path);
    // The watched folder itself may be a symbolic link to the real one;
    // below it links are never followed.
    const std::uint32_t mask = kDirMask | (path == m_root ? 0u : std::uint32_t(IN_DONT_FOLLOW));
    const int wd = inotify_add_watch(m_fd, native.constData(), mask);
    if (wd < 0) {
        const int err = errno;
        if (err == ENOSPC) {
            if (!m_limitReported)
                emit watchError(QStringLiteral("the system's limit of watched folders is reached "
                                               "(fs.inotify.max_user_watches); %1 and the folders below it are not watched")
                                    .arg(path));
            m_limitReported = true;
        } else if (err != ENOENT && err != ENOTDIR) {
            // A folder that vanished before we got to it is not an error.
            emit watchError(QStringLiteral("cannot watch %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(err))));
        }
        return -1;
    }
    auto known = m_dirs.find(wd);
    if (known != m_dirs.end()) {
        if (known->path == path)
            return -1; // already watched: its own events cover it
        // The same folder under a new name.
        known->path = path;
    }
    WatchedDir &dir = m_dirs[wd];
    dir.path = path;
    dir.files.clear();

    // The listing comes after the watch, so that nothing made in between is
    // missed (it may be seen twice, which does no harm).
    DIR *d = opendir(native.constData());
    if (!d) {
        if (errno == EACCES)
            emit watchError(QStringLiteral("cannot read %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
        return wd;
    }
    while (const dirent *ent = readdir(d)) {
        const char *n = ent->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0)))
            continue;
        unsigned char type = ent->d_type;
        if (type == DT_UNKNOWN) {
            struct stat st;
            if (fstatat(dirfd(d), n, &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            type = S_ISDIR(st.st_mode) ? DT_DIR : DT_REG;
        }
        const QString name = QFile::decodeName(n);
        if (type == DT_DIR) {
            if (subdirs)
                subdirs->append(joinPath(path, name));
        } else {
            dir.files.insert(name);
            if (files)
                files->append(joinPath(path, name));
        }
    }
    closedir(d);
    return wd;
}

void SCEvents::addTree(const QString &path, bool reportContents)
{
    QStringList pending{path};
    while (!pending.isEmpty()) {
        const QString dirPath = pending.takeLast();
        QStringList files;
        QStringList subdirs;
        const int wd = addDirWatch(dirPath, reportContents ? &files : nullptr, &subdirs);
        if (wd < 0)
            continue;
        if (dirPath == m_root)
            m_rootWd = wd;
        for (const QString &f : std::as_const(files))
            emitEvent(f, SCEvent::ItemCreated | SCEvent::ItemIsFile, 0);
        for (const QString &s : std::as_const(subdirs)) {
            if (reportContents)
                emitEvent(s, SCEvent::ItemCreated | SCEvent::ItemIsDir, 0);
            if (!isHiddenName(s.section(QLatin1Char('/'), -1)))
                pending.append(s);
        }
    }
}

void SCEvents::removeWatch(int wd)
{
    auto it = m_dirs.find(wd);
    if (it == m_dirs.end())
        return;
    // Fails harmlessly when the kernel already dropped the watch.
    inotify_rm_watch(m_fd, wd);
    m_dirs.erase(it);
}

void SCEvents::removeTree(const QString &path)
{
    QList<int> gone;
    for (auto it = m_dirs.cbegin(); it != m_dirs.cend(); ++it) {
        if (isSameOrBelow(it->path, path))
            gone.append(it.key());
    }
    for (int wd : std::as_const(gone))
        removeWatch(wd);
}

void SCEvents::rootLost(std::uint32_t mask)
{
    // A watch follows its folder when renamed, so every watch must go: they
    // would otherwise report on a folder that is no longer at our path.
    const QList<int> all = m_dirs.keys();
    for (int wd : all)
        removeWatch(wd);
    m_rootWd = -1;
    const std::uint32_t what = (mask & IN_MOVE_SELF) ? SCEvent::ItemRenamed : SCEvent::ItemRemoved;
    emitEvent(m_root, SCEvent::ItemIsDir | SCEvent::RootChanged | what, mask);
    m_rootMissing = true; // even when another folder already stands in its place
    reanchor();
}

void SCEvents::dropAnchor()
{
    if (m_anchorWd >= 0)
        inotify_rm_watch(m_fd, m_anchorWd);
    m_anchorWd = -1;
    m_anchorPath.clear();
}

void SCEvents::reanchor()
{
    dropAnchor();
    // Each pass either watches the folder or anchors one level nearer to it;
    // the number of levels bounds the loop.
    for (int guard = 0; guard <= m_root.count(QLatin1Char('/')) + 1; ++guard) {
        if (QFileInfo(m_root).isDir()) {
            addTree(m_root, false);
            if (m_rootWd < 0)
                return; // not watchable (permission): reported already
            if (m_rootMissing)
                emitEvent(m_root,
                          SCEvent::ItemIsDir | SCEvent::RootChanged | SCEvent::ItemCreated | SCEvent::MustScanSubDirs, 0);
            m_rootMissing = false;
            return;
        }
        m_rootMissing = true;
        QString anchor = parentPath(m_root);
        while (anchor != QLatin1String("/") && !QFileInfo(anchor).isDir())
            anchor = parentPath(anchor);
        const int wd = inotify_add_watch(m_fd, QFile::encodeName(anchor).constData(), kAnchorMask);
        if (wd < 0) {
            emit watchError(QStringLiteral("cannot wait for %1 to come back: %2")
                                .arg(m_root, QString::fromLocal8Bit(std::strerror(errno))));
            return;
        }
        m_anchorWd = wd;
        m_anchorPath = anchor;
        // The next level may have appeared between the look and the watch.
        const QString rel = m_root.mid(anchor == QLatin1String("/") ? 1 : anchor.size() + 1);
        if (!QFileInfo::exists(joinPath(anchor, rel.section(QLatin1Char('/'), 0, 0))))
            return;
        dropAnchor();
    }
}

void SCEvents::handleAnchorEvent(std::uint32_t mask, const QString &name)
{
    if (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) {
        if (mask & IN_IGNORED)
            m_anchorWd = -1; // the kernel dropped it; nothing to remove
        reanchor();
        return;
    }
    const QString rel = m_root.mid(m_anchorPath == QLatin1String("/") ? 1 : m_anchorPath.size() + 1);
    if (name == rel.section(QLatin1Char('/'), 0, 0))
        reanchor();
}

void SCEvents::resynchronise()
{
    emitEvent(m_root, SCEvent::ItemIsDir | SCEvent::MustScanSubDirs, IN_Q_OVERFLOW);
    const QList<int> all = m_dirs.keys();
    for (int wd : all)
        removeWatch(wd);
    m_rootWd = -1;
    dropAnchor();
    reanchor();
}

void SCEvents::readEvents()
{
    // 64 KiB takes a few hundred events per read; the loop drains the queue.
    alignas(inotify_event) char buffer[64 * 1024];
    const int fd = m_fd;
    m_lastPath.clear();
    m_lastFlags = 0;
    while (m_fd == fd) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0)
            break; // EAGAIN: drained
        for (ssize_t off = 0; off < n && m_fd == fd;) {
            const auto *ev = reinterpret_cast<const inotify_event *>(buffer + off);
            off += ssize_t(sizeof(inotify_event) + ev->len);
            const QString name = ev->len ? QFile::decodeName(ev->name) : QString();
            if (ev->mask & IN_Q_OVERFLOW) {
                resynchronise();
                continue;
            }
            if (ev->wd == m_anchorWd && m_anchorWd >= 0) {
                handleAnchorEvent(ev->mask, name);
                continue;
            }
            handleEvent(ev->wd, ev->mask, name);
        }
    }
}

void SCEvents::handleEvent(int wd, std::uint32_t mask, const QString &name)
{
    auto it = m_dirs.find(wd);
    if (it == m_dirs.end())
        return; // a watch removed a moment ago
    if (mask & IN_IGNORED) {
        const bool wasRoot = wd == m_rootWd;
        m_dirs.erase(it);
        if (wasRoot)
            rootLost(mask);
        return;
    }
    if (mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT)) {
        // Below the watched folder, the parent's entry event says it all.
        if (wd == m_rootWd)
            rootLost(mask);
        return;
    }
    const QString dirPath = it->path;
    if (name.isEmpty()) {
        if (mask & IN_ATTRIB)
            emitEvent(dirPath, SCEvent::ItemIsDir | SCEvent::ItemInodeMetaMod, mask);
        return;
    }
    const QString path = joinPath(dirPath, name);

    if (mask & IN_ISDIR) {
        if (mask & (IN_CREATE | IN_MOVED_TO)) {
            emitEvent(path, SCEvent::ItemIsDir | ((mask & IN_CREATE) ? SCEvent::ItemCreated : SCEvent::ItemRenamed), mask);
            if (!isHiddenName(name))
                addTree(path, true);
        } else if (mask & (IN_DELETE | IN_MOVED_FROM)) {
            removeTree(path);
            emitEvent(path, SCEvent::ItemIsDir | ((mask & IN_DELETE) ? SCEvent::ItemRemoved : SCEvent::ItemRenamed), mask);
        } else if (mask & IN_ATTRIB) {
            emitEvent(path, SCEvent::ItemIsDir | SCEvent::ItemInodeMetaMod, mask);
        }
        return;
    }

    constexpr std::uint32_t editFlags = SCEvent::ItemIsFile | SCEvent::ItemXattrMod;
    WatchedDir &dir = *it;
    if (mask & IN_CREATE) {
        dir.files.insert(name);
        emitEvent(path, SCEvent::ItemCreated | SCEvent::ItemIsFile, mask);
    } else if (mask & IN_MOVED_TO) {
        const bool replaced = dir.files.contains(name);
        dir.files.insert(name);
        dir.modified.remove(name);
        emitEvent(path, replaced ? (editFlags | SCEvent::ItemRenamed) : (SCEvent::ItemRenamed | SCEvent::ItemIsFile), mask);
    } else if (mask & IN_MOVED_FROM) {
        dir.files.remove(name);
        dir.modified.remove(name);
        emitEvent(path, SCEvent::ItemRenamed | SCEvent::ItemIsFile, mask);
    } else if (mask & IN_DELETE) {
        dir.files.remove(name);
        dir.modified.remove(name);
        emitEvent(path, SCEvent::ItemRemoved | SCEvent::ItemInodeMetaMod | SCEvent::ItemIsFile, mask);
    } else if (mask & IN_MODIFY) {
        dir.files.insert(name);
        if (!dir.modified.contains(name)) {
            dir.modified.insert(name);
            emitEvent(path, SCEvent::ItemModified | SCEvent::ItemIsFile, mask);
        }
    } else if (mask & IN_CLOSE_WRITE) {
        // Closing a file opened for writing but left unchanged is no edit.
        if (dir.modified.remove(name))
            emitEvent(path, editFlags | SCEvent::ItemModified | SCEvent::ItemRenamed, mask);
    } else if (mask & IN_ATTRIB) {
        emitEvent(path, SCEvent::ItemInodeMetaMod | SCEvent::ItemIsFile, mask);
    }
}
