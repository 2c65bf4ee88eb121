#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <functional>
#include <unistd.h>

#include <ostream>

// Readable QStrings in test failures.
inline void PrintTo(const QString &s, std::ostream *os) { *os << '"' << s.toStdString() << '"'; }

namespace externaltest {

// Runs the event loop until `done` holds or `timeoutMs` passed; never
// sleeps: it blocks only for events, and a timer ends the wait.
inline bool waitUntil(const std::function<bool()> &done, int timeoutMs = 10000)
{
    QDeadlineTimer deadline(timeoutMs);
    QTimer wake;
    wake.setSingleShot(true);
    wake.setTimerType(Qt::PreciseTimer);
    while (!done()) {
        if (deadline.hasExpired())
            return done();
        wake.start(std::max<qint64>(1, deadline.remainingTime()));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// Inotify instances and watches this process holds, as the kernel sees them.
struct InotifyUsage {
    int instances = 0;
    int watches = 0;
};
inline InotifyUsage inotifyUsage()
{
    InotifyUsage usage;
    const QStringList fds = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::NoDotAndDotDot);
    for (const QString &fd : fds) {
        char target[64] = {};
        const QByteArray link = QByteArrayLiteral("/proc/self/fd/") + fd.toLatin1();
        if (::readlink(link.constData(), target, sizeof target - 1) <= 0 || QByteArray(target) != "anon_inode:inotify")
            continue;
        ++usage.instances;
        QFile info(QStringLiteral("/proc/self/fdinfo/") + fd);
        if (!info.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : info.readAll().split('\n'))
            usage.watches += line.startsWith("inotify wd:") ? 1 : 0;
    }
    return usage;
}

// Writes into the existing file itself (no replace), as some editors save.
inline bool writeInPlace(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(bytes) == bytes.size();
}

} // namespace externaltest
