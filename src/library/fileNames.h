#pragma once

#include <QString>

// Path name helpers with the usual meaning of "extension": the part after
// the last "." of the last path component, when that "." is neither its
// first nor its last character (".profile" and "notes." have none).

// "notes/a.tar.gz" -> "gz"; "" when there is none.
QString pathExtension(const QString &path);
// The last path component without its extension: "notes/a.tar.gz" -> "a.tar".
QString fileNameDeletingPathExtension(const QString &path);
