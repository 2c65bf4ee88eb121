#include "library/file_copy.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

void setError(QString *error, const QString &message)
{
    if (error)
        *error = message;
}

bool writeAll(int fd, const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += n;
    }
    return true;
}

} // namespace

bool orvoWriteFileAtomically(const QString &path, const QByteArray &bytes, QString *error, FileSync sync)
{
    if (sync == FileSync::Now) {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
            setError(error, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
            return false;
        }
        return true;
    }
    // The same temporary-and-rename as QSaveFile, without its disk sync.
    // The temporary name is hidden and never looks like a document file.
    static std::atomic<quint64> counter{0};
    static const pid_t pid = ::getpid();
    const QFileInfo fi(path);
    const QString temporary = fi.absoluteDir().filePath(
        QStringLiteral(".%1.%2-%3.tmp").arg(fi.fileName()).arg(pid).arg(counter.fetch_add(1)));
    const QByteArray tmp = QFile::encodeName(temporary);
    const int fd = ::open(tmp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        setError(error, QStringLiteral("cannot write %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno))));
        return false;
    }
    const bool written = writeAll(fd, bytes);
    const int savedErrno = errno;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed || ::rename(tmp.constData(), QFile::encodeName(path).constData()) != 0) {
        setError(error, QStringLiteral("cannot write %1: %2")
                            .arg(path, QString::fromLocal8Bit(std::strerror(written ? errno : savedErrno))));
        ::unlink(tmp.constData());
        return false;
    }
    return true;
}

void orvoSyncFileSystemOf(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::syncfs(fd);
    ::close(fd);
}

bool orvoCopyPathIfMissing(const QString &source, const QString &destination)
{
    const QFileInfo from(source);
    if (!from.isDir() || from.isSymLink()) {
        if (QFileInfo::exists(destination) || QFileInfo(destination).isSymLink())
            return true;
        return QFile::copy(source, destination);
    }
    if (!QDir().mkpath(destination))
        return false;
    bool all = true;
    const QDir dir(source);
    for (const QFileInfo &entry : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System))
        all = orvoCopyPathIfMissing(entry.absoluteFilePath(), QDir(destination).filePath(entry.fileName())) && all;
    return all;
}
