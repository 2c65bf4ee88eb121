#pragma once

#include "platform/SCEvent.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

class QSocketNotifier;

// One recursive file system event stream over a folder, on inotify.
//
// Every folder below the watched one gets a watch of its own, and folders
// that appear later are watched as they appear; their contents at that
// moment are reported as new items, so that files made before the watch was
// in place are not missed. Folders whose names start with "." (.git,
// .OrvoMetaData) are reported but not descended into, and symbolic links are
// not followed below the watched folder (no cycles, no watching outside it).
//
// The watched folder may be renamed, deleted or replaced while watched. Its
// watches are then all dropped, an event with RootChanged is reported for
// it, and the stream waits on the nearest existing ancestor for a folder of
// that path to come back; when it does, watching resumes with an event that
// has RootChanged and MustScanSubDirs. A watched folder that does not exist
// yet is handled the same way. Nothing leaks: stopWatching() and the
// destructor remove every watch and close the descriptor.
//
// How kernel events map onto the item flags:
//   new file (IN_CREATE)                          ItemCreated | ItemIsFile
//   file written and closed (IN_CLOSE_WRITE after IN_MODIFY), or another
//   file moved over an existing one (atomic save) ItemModified/ItemRenamed | ItemXattrMod | ItemIsFile
//   first write of a file since it was closed     ItemModified | ItemIsFile
//   file renamed away or to a new name            ItemRenamed | ItemIsFile
//   file removed (its link count drops)           ItemRemoved | ItemInodeMetaMod | ItemIsFile
//   attributes or times changed (IN_ATTRIB)       ItemInodeMetaMod | ItemIsFile (or ItemIsDir)
//   any change to a folder entry                  ItemIsDir with ItemCreated/ItemRemoved/ItemRenamed
//   kernel queue overflow                         MustScanSubDirs | ItemIsDir on the watched folder
// A completed rewrite thereby classifies as an edit whichever way a
// program saves (in place or by replacing the file).
//
// Thread: an SCEvents works in the thread it lives in, which needs an event
// loop; events are emitted there, synchronously while reading the kernel
// queue.
class SCEvents : public QObject
{
    Q_OBJECT
public:
    explicit SCEvents(QObject *parent = nullptr);
    ~SCEvents() override;

    // Starts watching `path` (made absolute) and everything below it. A path
    // that does not exist yet is not an error: the stream waits for it.
    // False, with a reason, when the kernel gives no inotify instance or the
    // stream already runs.
    bool startWatchingPath(const QString &path, QString *error = nullptr);
    // Removes every watch and closes the descriptor. Safe to call twice.
    void stopWatching();

    bool isWatching() const { return m_fd >= 0; }
    // Whether the watched folder exists and is being watched right now.
    bool isRootPresent() const { return m_rootWd >= 0; }
    QString watchedPath() const { return m_root; }
    // Folders currently watched (the waiting watch on an ancestor excluded).
    int watchedFolderCount() const { return int(m_dirs.size()); }
    // Names of files currently known below the watched folder.
    qsizetype knownFileCount() const;

signals:
    void eventOccurred(const SCEvent &event);
    // A folder that could not be watched (permission denied, the system's
    // limit of watches reached). The stream goes on with the rest.
    void watchError(const QString &message);

private:
    struct WatchedDir {
        QString path;
        QSet<QString> files;    // names of the non-folder entries, to tell a replace from a new name
        QSet<QString> modified; // files written since their last close
    };

    void readEvents();
    void handleEvent(int wd, std::uint32_t mask, const QString &name);
    void handleAnchorEvent(std::uint32_t mask, const QString &name);
    void emitEvent(const QString &path, std::uint32_t flags, std::uint32_t mask);

    // Watches `path` and the folders below it. With reportContents, every
    // entry found is reported as new.
    void addTree(const QString &path, bool reportContents);
    // The watch of one folder; -1 when it cannot be had. Fills `entries`
    // (files) and `subdirs` (folders to descend into) from a listing made
    // after the watch is in place.
    int addDirWatch(const QString &path, QStringList *files, QStringList *subdirs);
    void removeTree(const QString &path);
    void removeWatch(int wd);
    void rootLost(std::uint32_t mask);
    // Watches the watched folder when it exists, otherwise its nearest
    // existing ancestor for the next path component to appear.
    void reanchor();
    void dropAnchor();
    void resynchronise();

    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
    QString m_root;
    int m_rootWd = -1;
    int m_anchorWd = -1;
    QString m_anchorPath;
    QHash<int, WatchedDir> m_dirs;
    bool m_limitReported = false;
    bool m_rootMissing = false; // the next time the folder is watched, say it came back
    // The last event emitted while reading one batch from the kernel, so
    // that a run of identical events (a large write) is reported once.
    QString m_lastPath;
    std::uint32_t m_lastFlags = 0;
};
