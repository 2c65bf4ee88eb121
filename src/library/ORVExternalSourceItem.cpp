#include "library/ORVExternalSourceItem.h"

#include "core/ORVBookmark.h"

#include <QDir>
#include <QFileInfo>

ORVExternalSourceItem::ORVExternalSourceItem(const QString &realURL, const QByteArray &bookmarkData)
    : m_realURL(normalizedFolderPath(realURL)), m_bookmarkData(bookmarkData)
{
}

std::shared_ptr<ORVExternalSourceItem> ORVExternalSourceItem::itemWithFolderPath(const QString &path)
{
    const QString p = normalizedFolderPath(path);
    return std::make_shared<ORVExternalSourceItem>(p, ORVBookmark::bookmarkDataWithPath(p));
}

std::shared_ptr<ORVExternalSettingData> ORVExternalSourceItem::settingData()
{
    if (!m_settingData)
        m_settingData = std::make_shared<ORVExternalSettingData>(m_realURL);
    return m_settingData;
}

QString ORVExternalSourceItem::resolveBookmark()
{
    const QString path = ORVBookmark::pathInBookmarkData(m_bookmarkData).value_or(QString());
    if (!path.isEmpty() && path != m_realURL) {
        m_realURL = path;
        m_settingData.reset();
    }
    return path;
}

QString ORVExternalSourceItem::normalizedFolderPath(const QString &path)
{
    if (path.isEmpty())
        return QString();
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}
