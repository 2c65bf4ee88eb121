#pragma once

#include "library/ORVExternalSettingData.h"

#include <QByteArray>
#include <QString>

#include <memory>

// One folder the user added as an external source.
//
// `realURL` is the folder's absolute path as last resolved; `bookmarkData`
// is the bookmark (ORVBookmark) that finds the folder again. The settings are read from the folder on first use and shared
// by whoever holds the item (tree entries, open documents).
class ORVExternalSourceItem
{
public:
    ORVExternalSourceItem(const QString &realURL, const QByteArray &bookmarkData);
    // A source for a folder, with a fresh bookmark.
    static std::shared_ptr<ORVExternalSourceItem> itemWithFolderPath(const QString &path);

    QString realURL() const { return m_realURL; }
    QByteArray bookmarkData() const { return m_bookmarkData; }
    void setBookmarkData(const QByteArray &data) { m_bookmarkData = data; }

    // The folder's settings, read on first use.
    std::shared_ptr<ORVExternalSettingData> settingData();
    // Drops the settings read so far; the next settingData() reads again.
    void reloadSettingData() { m_settingData.reset(); }

    // The folder the bookmark points at now, whether or not it is there at
    // the moment ("" for data that is no bookmark); updates realURL when it
    // moved.
    QString resolveBookmark();

    // The normal form folder paths are compared in: absolute, clean, no
    // trailing "/".
    static QString normalizedFolderPath(const QString &path);

private:
    QString m_realURL;
    QByteArray m_bookmarkData;
    std::shared_ptr<ORVExternalSettingData> m_settingData;
};
