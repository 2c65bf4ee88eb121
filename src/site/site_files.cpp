#include "site/site_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cstdio>

bool sitePathIsInside(const QString &folder, const QString &path)
{
    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QString cleaned = QDir::cleanPath(QDir(folder).absoluteFilePath(path));
    return cleaned == base || cleaned.startsWith(base + QLatin1Char('/'));
}

bool writeFileIfChanged(const QString &path, const QByteArray &bytes, bool mayExist)
{
    if (mayExist) {
        QFile existing(path);
        if (existing.size() == bytes.size() && existing.open(QIODevice::ReadOnly) && existing.readAll() == bytes)
            return true;
    }
    const QFileInfo fi(path);
    // Unique per write: pages are written from several threads at once.
    static std::atomic<quint64> counter{0};
    const QString temporary = fi.absolutePath() + QStringLiteral("/.") + fi.fileName() +
                              QStringLiteral(".%1.orvo-new").arg(counter.fetch_add(1));
    QFile out(temporary);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    if (out.write(bytes) != bytes.size() || !out.flush()) {
        out.close();
        QFile::remove(temporary);
        return false;
    }
    out.close();
    // rename(2) replaces the target in one step, which QFile::rename won't.
    if (std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path).constData()) != 0) {
        QFile::remove(temporary);
        return false;
    }
    return true;
}

namespace
{

int copyTree(const QString &from, const QString &to)
{
    int copied = 0;
    const QFileInfoList entries =
        QDir(from).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (entries.isEmpty())
        return 0;
    QDir().mkpath(to);
    for (const QFileInfo &fi : entries) {
        const QString target = QDir(to).filePath(fi.fileName());
        if (fi.isDir() && !fi.isSymLink()) {
            copied += copyTree(fi.filePath(), target);
        } else if (!QFileInfo::exists(target) && fi.exists()) {
            if (QFile::copy(fi.filePath(), target))
                ++copied;
        }
    }
    return copied;
}

} // namespace

int copyMissingEntries(const QString &from, const QString &to)
{
    if (!QFileInfo(from).isDir())
        return 0;
    return copyTree(from, to);
}

void copyDirectoryRecursively(const QString &from, const QString &to)
{
    if (!QFileInfo(from).isDir())
        return;
    QDir().mkpath(to);
    copyTree(from, to);
}
