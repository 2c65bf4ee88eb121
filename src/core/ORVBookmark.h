#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// A remembered location: an opaque blob that holds a folder's or file's
// absolute path. Library locations, backup locations and external sources
// are stored as bookmarks, in the preferences and in files, so that the
// format can grow (a volume id, say) without touching their owners.
// Beginning and ending access to a bookmarked location need nothing here.
class ORVBookmark
{
public:
    // The bookmark of a path (made absolute and clean). Empty for "".
    static QByteArray bookmarkDataWithPath(const QString &path);
    // The path a bookmark holds, whether or not it exists; nullopt when the
    // data is not a bookmark.
    static std::optional<QString> pathInBookmarkData(const QByteArray &data);
    // Resolving: the path, when the bookmark is one and the location exists
    // on this machine. nullopt otherwise.
    static std::optional<QString> resolveBookmarkData(const QByteArray &data);
};
