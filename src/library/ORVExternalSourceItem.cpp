#include "library/ORVExternalSourceItem.h"

#include <QDir>
#include <QFileInfo>

namespace {
// Bookmarks carry this prefix so that a blob of another kind is told apart.
const QByteArray kBookmarkPrefix = QByteArrayLiteral("orvo-bookmark:");
} // namespace

ORVExternalSourceItem::ORVExternalSourceItem(const QString &realURL, const QByteArray &bookmarkData)
    : m_realURL(normalizedFolderPath(realURL)), m_bookmarkData(bookmarkData)
{
}

std::shared_ptr<ORVExternalSourceItem> ORVExternalSourceItem::itemWithFolderPath(const QString &path)
{
    const QString p = normalizedFolderPath(path);
    return std::make_shared<ORVExternalSourceItem>(p, bookmarkDataWithPath(p));
}

std::shared_ptr<ORVExternalSettingData> ORVExternalSourceItem::settingData()
{
    if (!m_settingData)
        m_settingData = std::make_shared<ORVExternalSettingData>(m_realURL);
    return m_settingData;
}

QString ORVExternalSourceItem::resolveBookmark()
{
    const QString path = pathOfBookmarkData(m_bookmarkData);
    if (!path.isEmpty() && path != m_realURL) {
        m_realURL = path;
        m_settingData.reset();
    }
    return path;
}

QByteArray ORVExternalSourceItem::bookmarkDataWithPath(const QString &path)
{
    return kBookmarkPrefix + normalizedFolderPath(path).toUtf8();
}

QString ORVExternalSourceItem::pathOfBookmarkData(const QByteArray &data)
{
    if (!data.startsWith(kBookmarkPrefix))
        return QString();
    return QString::fromUtf8(data.mid(kBookmarkPrefix.size()));
}

QString ORVExternalSourceItem::normalizedFolderPath(const QString &path)
{
    if (path.isEmpty())
        return QString();
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}
