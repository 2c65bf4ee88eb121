#include "editor/ORVDocument.h"

#include "core/AppDelegate.h"
#include "core/MyPreferences.h"
#include "core/ORVExternalRecentDocumentManager.h"
#include "core/ORVLibraryRecentDocumentManager.h"
#include "core/ORVNotificationCenter.h"
#include "library/ORVDBManager.h"
#include "library/ORVExternalTree.h"
#include "library/document_title.h"
#include "library/fileNames.h"
#include "library/textEncoding.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUrl>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr QChar kAttachmentMark(0xFFFC);

QString systemMessage(int err) { return QString::fromLocal8Bit(std::strerror(err)); }

} // namespace

ORVDocument::ORVDocument(AppDelegate *appDel, QObject *parent) : QObject(parent), m_appDel(appDel)
{
    m_timerAutoSaveDocuemntTimer.setInterval(kAutosaveIntervalSeconds * 1000);
    connect(&m_timerAutoSaveDocuemntTimer, &QTimer::timeout, this, &ORVDocument::autoSaveDocumentIntervalHandler);
    m_timerAutoSaveDocuemntTimer.start();
    connect(&m_textStorage, &ORVTextStorage::didProcessEditing, this, [this] {
        if (!m_settingTextFromDisk)
            m_hasUnautosavedChanges = true;
    });
}

ORVDocument::~ORVDocument() = default;

void ORVDocument::setFileURL(const QString &path)
{
    m_fileURL = path.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    m_externalCateroryItem.reset();
}

// ---- reading

bool ORVDocument::readFileBytes(const QString &path, QByteArray *bytes, QString *error) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    *bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

void ORVDocument::setTextFromRead(const QString &text)
{
    m_settingTextFromDisk = true;
    m_textStorage.beginEditing();
    m_textStorage.setString(text);
    m_textStorage.endEditing();
    m_settingTextFromDisk = false;
    m_hasUnautosavedChanges = false;
}

bool ORVDocument::readFromURL(const QString &path, QString *error)
{
    const QString absolute = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    checkDocumentIsInLibrary(absolute);
    QByteArray bytes;
    if (!readFileBytes(absolute, &bytes, error))
        return false;
    if (const auto decoded = stringWithDataUsedEncoding(bytes)) {
        m_documentStringEncoding = decoded->encoding;
        m_documentHasByteOrderMark = decoded->hasByteOrderMark;
        m_undecoded = false;
        setTextFromRead(decoded->text);
    } else {
        readFromData(bytes, error);
    }
    m_undecodedFilePath = m_undecoded ? absolute : QString();
    setFileURL(absolute);
    recordAsRecent();
    return true;
}

bool ORVDocument::readFromData(const QByteArray &data, QString *)
{
    const std::uint32_t encoding = encodingOfUndeclaredData(data);
    m_documentStringEncoding = encoding;
    m_documentHasByteOrderMark = false;
    const auto decoded = decodeStringWithEncoding(data, encoding);
    m_undecoded = !decoded;
    m_undecodedFilePath.clear();
    // Undecoded, the text is left empty; the read still succeeds, and saves
    // over the bytes' file are refused (see dataOfType).
    setTextFromRead(decoded ? decoded->text : QString());
    m_documentHasByteOrderMark = decoded && decoded->hasByteOrderMark;
    return true;
}

bool ORVDocument::reloadDocumentFromDisk(QString *error)
{
    if (m_fileURL.isEmpty()) {
        if (error)
            *error = QStringLiteral("the document has no file");
        return false;
    }
    QByteArray bytes;
    if (!readFileBytes(m_fileURL, &bytes, error))
        return false;
    const auto decoded = stringWithDataUsedEncoding(bytes);
    if (!decoded) {
        if (error)
            *error = QStringLiteral("%1 is no longer readable as text; the text in the editor stays").arg(m_fileURL);
        return false;
    }
    m_documentStringEncoding = decoded->encoding;
    m_documentHasByteOrderMark = decoded->hasByteOrderMark;
    m_undecoded = false;
    m_undecodedFilePath.clear();
    MyPreferences *prefs = m_appDel->prfs();
    m_textStorage.fontName = prefs->editorFontName();
    m_textStorage.fontSize = prefs->editorFontSize();
    setTextFromRead(decoded->text);
    emit highlightAllDocumentWindowControllers();
    return true;
}

bool ORVDocument::revertToContentsOfURL(const QString &path, QString *error) { return readFromURL(path, error); }

bool ORVDocument::revertDocumentToSaved(QString *error)
{
    if (m_fileURL.isEmpty()) {
        if (error)
            *error = QStringLiteral("the document has no file");
        return false;
    }
    return revertToContentsOfURL(m_fileURL, error);
}

void ORVDocument::recordAsRecent()
{
    if (isLibraryDocument()) {
        const QString libName = m_libraryURL == m_appDel->libraryModeMainURL() ? QStringLiteral("main") : m_libraryURL;
        m_appDel->libraryRecentDocumentManager()->addItem(
            ORVLibraryRecentDocumentManager::itemWithLibNameUUID(libName, m_libraryDocumentUUID));
    } else if (!m_fileURL.isEmpty()) {
        m_appDel->externalRecentDocumentManager()->addItem(m_fileURL);
    }
    // Opening counts as a use of the stored editing position.
    if (auto state = textViewStateData()) {
        state->activeNumber = 0;
        setTextViewStateData(*state);
    }
}

// ---- saving

QString ORVDocument::removeUnkownCharWithString(const QString &text)
{
    QString out = text;
    out.remove(kAttachmentMark);
    return out;
}

QString ORVDocument::documentPureMarkdownString() const { return removeUnkownCharWithString(m_textStorage.string()); }

QString ORVDocument::fetchRealImgPath(const QString &text)
{
    const qsizetype space = text.indexOf(QLatin1Char(' '));
    return space < 0 ? text : text.left(space);
}

void ORVDocument::updateLibraryRowForSave(const QString &text)
{
    const auto manager = m_appDel->libraryModeDBManagerByURL(m_libraryURL);
    if (!manager)
        return;
    std::optional<ORVDBArticle> art = manager->itemDBArticleWithUUID(m_libraryDocumentUUID);
    if (!art)
        return; // the bytes are still written; the row stays as it was
    const QString docs = m_appDel->libraryModeDocsURLByLibURL(m_libraryURL);
    const QString ownMedia = QStringLiteral("media/%1").arg(m_libraryDocumentUUID);
    static const QRegularExpression link(QStringLiteral("\\[.*?\\]\\((.*?)\\)"),
                                         QRegularExpression::CaseInsensitiveOption);
    QStringList otherMedia;
    for (auto it = link.globalMatch(text); it.hasNext();) {
        const QString target = fetchRealImgPath(it.next().captured(1));
        if (target.isEmpty() || target.startsWith(QLatin1String("http://")) ||
            target.startsWith(QLatin1String("https://")))
            continue;
        const QString decoded = QUrl::fromPercentEncoding(target.toUtf8());
        if (!QFileInfo::exists(QDir(docs).filePath(decoded)))
            continue;
        if (!decoded.toLower().startsWith(ownMedia))
            otherMedia.append(decoded);
    }
    art->setOtherMediaPaths(otherMedia);
    art->setDateModif(QDateTime::currentSecsSinceEpoch());
    manager->saveItemDBArticle(*art);
}

std::optional<QByteArray> ORVDocument::dataOfType(QString *error) { return dataForSaveToPath(m_fileURL, error); }

std::optional<QByteArray> ORVDocument::dataForSaveToPath(const QString &target, QString *error)
{
    if (m_undecoded && !m_undecodedFilePath.isEmpty() && target == m_undecodedFilePath) {
        if (error)
            *error = QStringLiteral("%1 could not be read as text (it is not %2), so the editor shows none of it; "
                                    "saving would replace the file's contents, so it is not saved")
                         .arg(target, ORVStringEncoding::name(m_documentStringEncoding));
        return std::nullopt;
    }
    const QString text = documentPureMarkdownString();
    const std::uint32_t encoding = m_documentStringEncoding ? m_documentStringEncoding : ORVStringEncoding::UTF8;
    // Encoded before the library row is touched, so that a text the
    // encoding cannot carry changes nothing.
    std::optional<QByteArray> bytes = encodeStringWithEncoding(text, encoding, m_documentHasByteOrderMark);
    if (!bytes) {
        if (error)
            *error = QStringLiteral("the text has characters that %1 cannot represent")
                         .arg(ORVStringEncoding::name(encoding));
        return std::nullopt;
    }
    if (isLibraryDocument() && !isQuickNoteDocument)
        updateLibraryRowForSave(text);
    return bytes;
}

bool ORVDocument::saveToURL(const QString &path, QString *error)
{
    QString message;
    const auto finish = [&](bool ok) {
        if (error)
            *error = message;
        emit documentDidSave(ok, message);
        return ok;
    };
    const QString target = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    // The atomic replace would go through a read-only file (it needs only
    // the folder to be writable); a read-only file is the user's "keep".
    struct stat st;
    if (::stat(QFile::encodeName(target).constData(), &st) == 0 &&
        (::access(QFile::encodeName(target).constData(), W_OK) != 0 || !(st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)))) {
        message = QStringLiteral("%1: %2").arg(target, systemMessage(EACCES));
        return finish(false);
    }
    std::optional<QByteArray> bytes = dataForSaveToPath(target, &message);
    if (!bytes)
        return finish(false);
    QSaveFile file(target);
    if (!file.open(QIODevice::WriteOnly)) {
        message = QStringLiteral("%1: %2").arg(target, file.errorString());
        return finish(false);
    }
    if (file.write(*bytes) != bytes->size() || !file.commit()) {
        message = QStringLiteral("%1: %2").arg(target, file.errorString());
        file.cancelWriting();
        return finish(false);
    }
    if (target != m_fileURL)
        setFileURL(target);
    m_hasUnautosavedChanges = false;
    if (!isLibraryDocument())
        ORVNotificationCenter::defaultCenter()->postNotification(
            kORVExternalTabsControlRearrageDataNotification, this,
            QVariantMap{{QStringLiteral("doc"), QVariant::fromValue(static_cast<QObject *>(this))}});
    return finish(true);
}

bool ORVDocument::saveDocument(QString *error)
{
    if (m_fileURL.isEmpty()) {
        if (error)
            *error = QStringLiteral("the document has no file yet");
        emit documentDidSave(false, QStringLiteral("the document has no file yet"));
        return false;
    }
    return saveToURL(m_fileURL, error);
}

void ORVDocument::saveCurrentDocument()
{
    if (!m_fileURL.isEmpty() && m_hasUnautosavedChanges)
        saveDocument();
}

// ---- titles

QString ORVDocument::documentTitleRemoveMark() const
{
    if (isLibraryDocument()) {
        const QString title = documentTitleAndSummaryWithContent(documentPureMarkdownString()).title;
        return title.isEmpty() ? QCoreApplication::translate("ORVDocument", "Untitled") : title;
    }
    return m_fileURL.isEmpty() ? QStringLiteral("") : fileNameDeletingPathExtension(m_fileURL);
}

QString ORVDocument::theUnLibrarayDocuementDefaultTitle() const
{
    const QString text = documentPureMarkdownString();
    if (text.isEmpty())
        return QStringLiteral("untitled");
    return documentTitleAndSummaryWithContent(text).title;
}

// ---- where it belongs

void ORVDocument::checkDocumentIsInLibrary(const QString &path)
{
    const QString file = path.isEmpty() ? m_fileURL : path;
    m_libraryURL.clear();
    m_libraryDocumentUUID = 0;
    bool isNumber = false;
    const qint64 number = fileNameDeletingPathExtension(file).toLongLong(&isNumber);
    if (!isNumber || number <= kLibraryFileNumberFloor)
        return;
    const QString library = m_appDel->libraryURLByFileURL(file);
    if (library.isEmpty())
        return;
    m_libraryURL = library;
    m_libraryDocumentUUID = number;
}

bool ORVDocument::isLibraryDocument() const
{
    return !m_libraryURL.isEmpty() && m_libraryDocumentUUID > kLibraryDocumentUUIDFloor;
}

bool ORVDocument::isExternalInnerDocument()
{
    if (m_fileURL.isEmpty())
        return false;
    ORVExternalCategoryItemPtr entry = m_appDel->externalTreeData()->sourceEntryContainingPath(m_fileURL);
    if (!entry)
        return false;
    m_externalCateroryItem = entry;
    return true;
}

bool ORVDocument::isMarkdownNewlineToBR()
{
    const bool preference = m_appDel->prfs()->isTranslateNewlineToBRtags();
    if (isLibraryDocument() || !isExternalInnerDocument())
        return preference;
    const auto settings = m_externalCateroryItem->settingData();
    if (!settings)
        return preference;
    if (settings->newlinesToBR == 1)
        return true;
    if (settings->newlinesToBR == 2)
        return false;
    return preference;
}

// ---- media

QString ORVDocument::mediaSaveURLFloderType(std::optional<QString> *mediaFolderName,
                                            std::optional<std::uint64_t> *folderType)
{
    if (isLibraryDocument()) {
        if (mediaFolderName)
            *mediaFolderName = QStringLiteral("media");
        return m_appDel->libraryModeDocsURLByLibURL(m_libraryURL);
    }
    if (!isExternalInnerDocument())
        return QString();
    const auto settings = m_externalCateroryItem->settingData();
    if (!settings)
        return QString();
    if (mediaFolderName)
        *mediaFolderName = settings->mediaFloder;
    if (folderType)
        *folderType = settings->folderType;
    if (settings->folderType == ORVExternalSettingData::kFolderTypeMediaAtSourceRoot)
        return settings->externalFolderURL();
    if (settings->folderType == ORVExternalSettingData::kFolderTypeMediaBesideDocument)
        return QFileInfo(m_fileURL).absolutePath();
    return QString();
}

// ---- library data, or the file's

QStringList ORVDocument::libraryDocumentCats()
{
    if (!isLibraryDocument())
        return {};
    const auto manager = m_appDel->libraryModeDBManagerByURL(m_libraryURL);
    return manager ? manager->dicArticleCatsMaps().value(m_libraryDocumentUUID).names : QStringList();
}

QStringList ORVDocument::libraryDocumentTags()
{
    if (!isLibraryDocument())
        return {};
    const auto manager = m_appDel->libraryModeDBManagerByURL(m_libraryURL);
    return manager ? manager->articleTagsNamesByArticleUUID(m_libraryDocumentUUID) : QStringList();
}

QDateTime ORVDocument::documentCreateDate()
{
    if (isLibraryDocument()) {
        if (const auto manager = m_appDel->libraryModeDBManagerByURL(m_libraryURL))
            if (const auto art = manager->itemDBArticleWithUUID(m_libraryDocumentUUID))
                return art->dateAddNSDate();
    }
    const QFileInfo info(m_fileURL);
    return info.birthTime().isValid() ? info.birthTime() : info.lastModified();
}

QDateTime ORVDocument::documentLastModifDate()
{
    if (isLibraryDocument()) {
        if (const auto manager = m_appDel->libraryModeDBManagerByURL(m_libraryURL))
            if (const auto art = manager->itemDBArticleWithUUID(m_libraryDocumentUUID))
                return art->dateModifNSDate();
    }
    return QFileInfo(m_fileURL).lastModified();
}

// ---- state

QVariantMap ORVDocument::encodeRestorableState() const
{
    if (isLibraryDocument())
        return {{QStringLiteral("libURL"), m_libraryURL}, {QStringLiteral("libDocUUID"), m_libraryDocumentUUID}};
    return {{QStringLiteral("fileURL"), m_fileURL}};
}

void ORVDocument::restoreDocumentWindowWithState(const QVariantMap &state)
{
    const QString lib = state.value(QStringLiteral("libURL")).toString();
    if (lib.isEmpty())
        return;
    m_libraryURL = lib;
    m_libraryDocumentUUID = state.value(QStringLiteral("libDocUUID")).toLongLong();
}

std::optional<ORVTextViewStateData> ORVDocument::textViewStateData() const
{
    if (m_fileURL.isEmpty())
        return std::nullopt;
    return m_appDel->getTextViewStateByURL(m_fileURL);
}

void ORVDocument::setTextViewStateData(const ORVTextViewStateData &state)
{
    if (!m_fileURL.isEmpty())
        m_appDel->addTextViewStateDataStateData(m_fileURL, state);
}

// ---- rename

qsizetype ORVDocument::renameSelectionLengthForName(const QString &name)
{
    const QString ext = pathExtension(name);
    return ext.size() > 1 ? name.size() - ext.size() - 1 : name.size();
}

bool ORVDocument::renameDocumentWithName(const QString &newName, QString *error)
{
    const auto fail = [&](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    const QString name = newName.trimmed();
    if (m_fileURL.isEmpty())
        return fail(QStringLiteral("the document has no file to rename"));
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name == QLatin1String(".") || name == QLatin1String(".."))
        return fail(QStringLiteral("\"%1\" is not a file name").arg(newName));
    const QString fileName = pathExtension(name).isEmpty() ? name + QStringLiteral(".md") : name;
    const QString target = QFileInfo(m_fileURL).dir().filePath(fileName);
    if (target == m_fileURL)
        return true;
    if (QFileInfo::exists(target))
        return fail(QStringLiteral("%1 exists already").arg(target));
    if (::rename(QFile::encodeName(m_fileURL).constData(), QFile::encodeName(target).constData()) != 0)
        return fail(QStringLiteral("%1: %2").arg(m_fileURL, systemMessage(errno)));
    setFileURL(target);
    return true;
}
