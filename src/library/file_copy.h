#pragma once

#include <QByteArray>
#include <QString>

// Writing and copying files for the document operations.

enum class FileSync {
    Now,   // the file is on disk when the call returns
    Later, // the caller syncs the batch with orvoSyncFileSystemOf
};

// Writes the bytes to `path` atomically: a temporary file beside it is
// written and then renamed over it, so that a reader or a crash sees the
// old file or the whole new one, never a part. With FileSync::Later the
// disk sync is left to the caller, who makes a batch of files and syncs them
// once (a sync per file would make an import of thousands take minutes).
bool orvoWriteFileAtomically(const QString &path, const QByteArray &bytes, QString *error = nullptr,
                             FileSync sync = FileSync::Now);

// Flushes everything written to the file system that holds `path`.
void orvoSyncFileSystemOf(const QString &path);

// Copies a file, or a folder with everything in it, to `destination`,
// leaving alone whatever exists there already. False when something could
// not be copied.
bool orvoCopyPathIfMissing(const QString &source, const QString &destination);
