#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

// Watches one file and tells what happened to it. It keeps watching across
// an atomic replace (a new file renamed over the old one, as SQLite tools and
// sync services do) and across a short absence: when the file comes back,
// watching resumes and the return is reported as a change of content.
//
// Thread: the thread that made it (signals come from its event loop).
class TABFileMonitor : public QObject
{
    Q_OBJECT
public:
    // The kinds of change, as the value of didSeeChange.
    enum Change {
        FileDeleted = 1,      // the file is gone (it may come back)
        AttributesChanged = 2, // permissions or times, same content
        ContentChanged = 4,   // written, or replaced by another file
    };
    Q_ENUM(Change)

    explicit TABFileMonitor(const QString &filePath, QObject *parent = nullptr);

    const QString &filePath() const { return m_path; }

signals:
    // fileMonitor:didSeeChange:
    void didSeeChange(TABFileMonitor *monitor, int change);

private:
    struct Snapshot {
        bool exists = false;
        quint64 inode = 0;
        qint64 size = -1;
        qint64 modifiedNs = 0; // content time
        qint64 changedNs = 0;  // inode time: content or attributes
        bool operator==(const Snapshot &) const = default;
    };
    Snapshot snapshot() const;
    void rearm();
    void check();

    QString m_path;
    QString m_folder;
    QFileSystemWatcher m_watcher;
    Snapshot m_last;
};
