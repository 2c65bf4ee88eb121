#include "core/ORVBookmark.h"

#include <QDir>
#include <QFileInfo>

namespace {

// Format 1: this prefix, then the path in UTF-8.
const QByteArray kPrefix = QByteArrayLiteral("orvo-bookmark:1:");

} // namespace

QByteArray ORVBookmark::bookmarkDataWithPath(const QString &path)
{
    if (path.isEmpty())
        return {};
    return kPrefix + QDir::cleanPath(QFileInfo(path).absoluteFilePath()).toUtf8();
}

std::optional<QString> ORVBookmark::pathInBookmarkData(const QByteArray &data)
{
    if (!data.startsWith(kPrefix) || data.size() == kPrefix.size())
        return std::nullopt;
    return QString::fromUtf8(data.mid(kPrefix.size()));
}

std::optional<QString> ORVBookmark::resolveBookmarkData(const QByteArray &data)
{
    const std::optional<QString> path = pathInBookmarkData(data);
    if (!path || !QFileInfo::exists(*path))
        return std::nullopt;
    return path;
}
