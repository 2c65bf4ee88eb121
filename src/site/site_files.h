#pragma once

#include <QByteArray>
#include <QString>

// File operations of the site build. Errors of the file system are not
// reported one by one: a build goes on and the caller counts what happened.

// Whether `path`, once cleaned of "." and "..", lies inside `folder` (or is
// it). Neither needs to exist. Symbolic links are not followed.
bool sitePathIsInside(const QString &folder, const QString &path);

// Writes the bytes to `path` atomically (a temporary file beside it, then a
// rename over it), unless the file already holds exactly these bytes: an
// update build then leaves equal files alone. Not synced to disk: a site
// folder can always be built again, and syncing each of thousands of pages
// would cost more than the build. False when it couldn't be written.
// `mayExist` false skips the comparison (a clearing build has just emptied
// the folder).
bool writeFileIfChanged(const QString &path, const QByteArray &bytes, bool mayExist = true);

// Copies each entry of `from` (files, and folders with their content) into
// `to` when no entry of that name is there yet; existing files are never
// refreshed. `to` is made only when `from` has entries. Returns how many
// files were copied.
int copyMissingEntries(const QString &from, const QString &to);

// Copies a folder with everything in it, making `to`; files already there
// are left alone. Nothing happens when `from` isn't a folder.
void copyDirectoryRecursively(const QString &from, const QString &to);
