#pragma once

#include <QByteArray>
#include <QJsonValue>
#include <QString>
#include <QVariant>

#include <optional>

// The archive format of the state files, the settings file and the service
// lists: UTF-8 JSON that keeps the types JSON lacks. Maps become objects,
// lists arrays; bytes become {"$data": base64} and times {"$date": ISO 8601
// with milliseconds, UTC}; an invalid QVariant becomes null. Reading turns
// those back, numbers without a fraction into qint64.
QJsonValue archiveValue(const QVariant &value);
QVariant unarchiveValue(const QJsonValue &value);

// A whole archive as bytes, and back. nullopt when the bytes are not JSON
// (an archive's top is an object or an array).
QByteArray archivedDataWithRootObject(const QVariant &root);
std::optional<QVariant> unarchiveObjectWithData(const QByteArray &data);

// Reads a file written by writeArchiveFile; nullopt when it is missing or
// not an archive.
std::optional<QVariant> readArchiveFile(const QString &path);
// Writes atomically: a reader sees the old file or the new one, never half.
bool writeArchiveFile(const QString &path, const QVariant &root);
