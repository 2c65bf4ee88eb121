// AppDelegate: the state files, the editing positions and the recent lists.
#include "core/AppDelegate.h"

#include "core/ORVAppPaths.h"
#include "core/ORVBookmark.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/json_archive.h"

#include <QDir>
#include <QFile>

bool AppDelegate::saveAppStateDataWithDataArray(const QVariantList &windowStates)
{
    return writeArchiveFile(statePath(QStringLiteral("AppStateData.data")), windowStates);
}

std::optional<QVariantList> AppDelegate::fetchAppStateData() const
{
    const std::optional<QVariant> stored = readArchiveFile(statePath(QStringLiteral("AppStateData.data")));
    if (!stored || stored->typeId() != QMetaType::QVariantList)
        return std::nullopt;
    return stored->toList();
}

bool AppDelegate::saveLibraryLastWindowState(const QVariantMap &state)
{
    return writeArchiveFile(statePath(QStringLiteral("libraryLastWindowState.data")), state);
}

QVariantMap AppDelegate::fetchLibraryLastWindowState() const
{
    return readArchiveFile(statePath(QStringLiteral("libraryLastWindowState.data"))).value_or(QVariant()).toMap();
}

bool AppDelegate::saveExternalLastWindowState(const QVariantMap &state)
{
    return writeArchiveFile(statePath(QStringLiteral("externalLastWindowState.data")), state);
}

QVariantMap AppDelegate::fetchExternalLastWindowState() const
{
    return readArchiveFile(statePath(QStringLiteral("externalLastWindowState.data"))).value_or(QVariant()).toMap();
}

QString AppDelegate::fileURLWithBase64DocPath(const QString &docPath)
{
    static const QString prefix = QStringLiteral("base64:");
    if (!docPath.startsWith(prefix))
        return docPath;
    return ORVBookmark::resolveBookmarkData(QByteArray::fromBase64(docPath.mid(prefix.size()).toLatin1()))
        .value_or(QString());
}

QString AppDelegate::base64DocPathWithFileURL(const QString &filePath)
{
    const QByteArray bookmark = ORVBookmark::bookmarkDataWithPath(filePath);
    return bookmark.isEmpty() ? QString() : QStringLiteral("base64:%1").arg(QString::fromLatin1(bookmark.toBase64()));
}

void AppDelegate::addTextViewStateDataStateData(const QString &key, const ORVTextViewStateData &state)
{
    if (!key.isEmpty())
        m_textViewStateDataDic.insert(key, state);
}

std::optional<ORVTextViewStateData> AppDelegate::getTextViewStateByURL(const QString &key) const
{
    const auto it = m_textViewStateDataDic.constFind(key);
    if (it == m_textViewStateDataDic.constEnd())
        return std::nullopt;
    return *it;
}

void AppDelegate::readTextViewStateDataFromDisk()
{
    const QString path = statePath(QStringLiteral("textViewStateData.data"));
    if (!QFile::exists(path))
        return;
    const QVariantMap stored = readArchiveFile(path).value_or(QVariant()).toMap();
    for (auto it = stored.begin(); it != stored.end(); ++it)
        if (const auto state = ORVTextViewStateData::fromArchive(it.value()))
            m_textViewStateDataDic.insert(it.key(), *state);
    ORVTextViewStateData::ageTextViewStates(m_textViewStateDataDic);
    saveTextViewStateDataToDisk();
}

bool AppDelegate::saveTextViewStateDataToDisk()
{
    QVariantMap all;
    for (auto it = m_textViewStateDataDic.constBegin(); it != m_textViewStateDataDic.constEnd(); ++it)
        all.insert(it.key(), it->archive());
    return writeArchiveFile(statePath(QStringLiteral("textViewStateData.data")), all);
}

ORVLibraryRecentDocumentManager *AppDelegate::libraryRecentDocumentManager()
{
    if (!m_libraryRecentDocumentManager)
        m_libraryRecentDocumentManager = std::make_unique<ORVLibraryRecentDocumentManager>(m_supportDir);
    return m_libraryRecentDocumentManager.get();
}

ORVExternalRecentDocumentManager *AppDelegate::externalRecentDocumentManager()
{
    if (!m_externalRecentDocumentManager)
        m_externalRecentDocumentManager = std::make_unique<ORVExternalRecentDocumentManager>(m_supportDir);
    return m_externalRecentDocumentManager.get();
}

QString AppDelegate::fetchWelcomeContent()
{
    QFile file(QDir(ORVAppPaths::applicationResourcesURL()).filePath(QStringLiteral("welcome-en.md")));
    if (file.open(QIODevice::ReadOnly)) {
        const QString text = QString::fromUtf8(file.readAll());
        if (!text.isEmpty())
            return text;
    }
    return QStringLiteral("# Welcome to Orvo!");
}
