#include "library/ORVLibraryDocuments.h"

#include "core/ORVNotificationCenter.h"
#include "library/ORVCatTreeItem.h"
#include "library/ORVDBManager.h"
#include "library/ORVLibraryFolder.h"
#include "library/ORVLibraryListNotifications.h"
#include "library/ORVLibraryTree.h"
#include "library/document_title.h"
#include "library/file_copy.h"
#include "library/folder_entries.h"
#include "library/text_file.h"
#include "platform/ORVSystemTrash.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

namespace {

// The import candidates of a folder: its plain files (not hidden, not in
// subfolders) with one of `types` as spelled, in the order of their file
// numbers, which is mostly the order they were made in.
QStringList folderImportCandidates(const QString &folder, const QStringList &types)
{
    QList<ORVFolderFileEntry> entries = orvoListFolderFiles(folder);
    entries.removeIf([&](const ORVFolderFileEntry &e) {
        const qsizetype dot = e.name.lastIndexOf(QLatin1Char('.'));
        return dot < 0 || !types.contains(e.name.mid(dot + 1));
    });
    std::stable_sort(entries.begin(), entries.end(),
                     [](const auto &a, const auto &b) { return a.fileNumber < b.fileNumber; });
    const QDir base(folder);
    QStringList paths;
    for (const ORVFolderFileEntry &e : std::as_const(entries))
        paths << base.absoluteFilePath(e.name);
    return paths;
}

bool startsWithWebScheme(const QString &target)
{
    return target.startsWith(QLatin1String("http://"), Qt::CaseInsensitive) ||
           target.startsWith(QLatin1String("https://"), Qt::CaseInsensitive);
}

// The ways a link target may name a file beside the document: as written,
// percent-decoded (links made by editors encode spaces), and without a
// query or fragment ("a.png?raw=1", "notes.md#part").
QStringList linkTargetCandidates(QString target)
{
    if (target.startsWith(QLatin1Char('<')) && target.endsWith(QLatin1Char('>')))
        target = target.mid(1, target.size() - 2);
    QStringList candidates;
    const auto add = [&](const QString &c) {
        if (!c.isEmpty() && !candidates.contains(c))
            candidates << c;
    };
    if (target.startsWith(QLatin1String("file://"), Qt::CaseInsensitive)) {
        add(QUrl(target).toLocalFile());
        return candidates;
    }
    add(target);
    add(QUrl::fromPercentEncoding(target.toUtf8()));
    const qsizetype cut = target.indexOf(QRegularExpression(QStringLiteral("[?#]")));
    if (cut > 0) {
        add(target.left(cut));
        add(QUrl::fromPercentEncoding(target.left(cut).toUtf8()));
    }
    return candidates;
}

// The last path component of a link as written, without query or fragment.
QString writtenFileName(QString target)
{
    if (target.startsWith(QLatin1Char('<')) && target.endsWith(QLatin1Char('>')))
        target = target.mid(1, target.size() - 2);
    const qsizetype cut = target.indexOf(QRegularExpression(QStringLiteral("[?#]")));
    if (cut > 0)
        target = target.left(cut);
    return target.section(QLatin1Char('/'), -1);
}

// A file name from a document title: the export's own names must fit the
// file system's 255 bytes with the ".md" and a clash number behind them.
QString exportBaseName(const QString &title, qint64 uuid)
{
    constexpr int kMaxNameBytes = 240;
    QString name = documentTitleRemoveMark(title).trimmed();
    name.replace(QLatin1Char('/'), QLatin1Char('-'));
    name.remove(QChar(0));
    while (name.toUtf8().size() > kMaxNameBytes || (!name.isEmpty() && name.back().isHighSurrogate()))
        name.chop(1);
    return name.isEmpty() ? QString::number(uuid) : name;
}

} // namespace

ORVLibraryDocuments::ORVLibraryDocuments(std::shared_ptr<ORVDBManager> manager, QString libraryPath,
                                         ORVLibraryTree *tree)
    : m_manager(std::move(manager)), m_libraryPath(std::move(libraryPath)), m_tree(tree)
{
}

QString ORVLibraryDocuments::docsPath() const { return QDir(m_libraryPath).filePath(QStringLiteral("docs")); }

void ORVLibraryDocuments::postListReload()
{
    ORVNotificationCenter::defaultCenter()->postNotification(kORVListViewControllerReloadTableViewNotification, nullptr,
                                                             {{QStringLiteral("dbURL"), m_manager->dbURL()}});
}

QString ORVLibraryDocuments::noteLinkText(const QString &title, qint64 uuid)
{
    return QStringLiteral("[%1](orvolib://%2)").arg(title).arg(uuid);
}

// ---- new document

std::optional<ORVDBArticle> ORVLibraryDocuments::newDocument(const ORVCatTreeItem *place, const QString &title,
                                                             QString *error)
{
    const auto fail = [&](const QString &why) -> std::optional<ORVDBArticle> {
        if (error)
            *error = why;
        return std::nullopt;
    };
    if (ORVLibraryFolder::libraryModeDocsURLByLibURL(m_libraryPath).isEmpty())
        return fail(QStringLiteral("the docs folder of %1 cannot be made").arg(m_libraryPath));
    const ORVDBArticle art = ORVDBArticle::newDocumentArticle();
    const QString path = ORVLibraryFolder::documentPath(m_libraryPath, art.uuid());
    const QByteArray text = title.isEmpty() ? QByteArray("# ") : QStringLiteral("# %1\n").arg(title).toUtf8();
    QString why;
    if (!orvoWriteFileAtomically(path, text, &why))
        return fail(why);
    if (!m_manager->insertItemDBArticle(art))
        return fail(QStringLiteral("%1 was written but could not be added to the library: %2")
                        .arg(path, m_manager->db().lastErrorMessage()));
    if (place && place->catType == ORVCatType::Tag) {
        if (!m_manager->updateDBArticleWithNewTagID(art, place->uuid))
            return fail(QStringLiteral("document %1 was made but could not be given the tag \"%2\"")
                            .arg(art.uuid())
                            .arg(place->name));
        if (m_tree)
            m_tree->updateLibraryTreeTagsData();
    } else if (place && ORVDBCat::checkCatTypeIsDBCatItem(place->catType)) {
        if (!m_manager->updateDBArticleWithCatIIDS(art, {place->uuid}))
            return fail(QStringLiteral("document %1 was made but could not be put in category %2")
                            .arg(art.uuid())
                            .arg(place->uuid));
    } else if (m_tree) {
        m_tree->updateLibraryCategoryWithAllCats(false);
    }
    postListReload();
    return art;
}

// ---- final deletion

ORVLibraryDocuments::DeletionResult ORVLibraryDocuments::deleteDBArticlesWithArray(const QList<ORVDBArticle> &articles)
{
    DeletionResult result;
    m_manager->performInTransaction([&](FMDatabase &) {
        for (const ORVDBArticle &art : articles) {
            if (art.state() != ORVDBArticle::StateTrash) {
                result.notInTrash << art.uuid(); // a normal document is never deleted here
                continue;
            }
            const QString file = ORVLibraryFolder::documentPath(m_libraryPath, art.uuid());
            const QString media = QDir(docsPath()).filePath(QStringLiteral("media/%1").arg(art.uuid()));
            QString why;
            bool kept = false;
            for (const QString &path : {file, media}) {
                const QFileInfo fi(path);
                if (!fi.exists() && !fi.isSymLink())
                    continue;
                if (!ORVSystemTrash::moveFileOrDirToTrashWithPath(path, &why)) {
                    result.errors << QStringLiteral("document %1 was not deleted: %2").arg(art.uuid()).arg(why);
                    kept = true;
                    break;
                }
            }
            if (kept)
                continue;
            if (!m_manager->deleteDBArticle(art)) {
                result.errors << QStringLiteral("document %1: its files went to the trash but its row could not be "
                                                "removed: %2")
                                     .arg(art.uuid())
                                     .arg(m_manager->db().lastErrorMessage());
                continue;
            }
            result.deleted << art.uuid();
            ORVNotificationCenter::defaultCenter()->postNotification(kORVListViewControllerDeleteDocumentNotification,
                                                                     nullptr, {{QStringLiteral("url"), file}});
        }
    });
    if (m_tree && !result.deleted.isEmpty())
        m_tree->updateLibraryCategoryWithAllCats(false);
    return result;
}

// ---- import

QString ORVLibraryDocuments::importNothingMessage()
{
    return QStringLiteral(
        "Can't import file, please make sure you choose's folder contain .txt, .md or .markdown file!");
}

const QStringList &ORVLibraryDocuments::importPanelFileTypes()
{
    static const QStringList types{QStringLiteral("md"), QStringLiteral("markdown"), QStringLiteral("mdown"),
                                   QStringLiteral("txt"), QStringLiteral("text")};
    return types;
}

QString ORVLibraryDocuments::fetchRealImgPath(const QString &target)
{
    const qsizetype cut = target.indexOf(QLatin1String(" \""));
    return cut < 0 ? target : target.left(cut);
}

QString ORVLibraryDocuments::makeLibraryStyleImagesURLsWithString(const QString &text, qint64 docUUID,
                                                                  const QString &docPath,
                                                                  QList<ORVImportMediaRecord> *imgURLs)
{
    static const QRegularExpression link(QStringLiteral("\\[(.*?)\\]\\((.*?)\\)"),
                                         QRegularExpression::CaseInsensitiveOption);
    const QDir folder = QFileInfo(docPath).absoluteDir();
    QString out;
    qsizetype copied = 0;
    QRegularExpressionMatchIterator it = link.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch m = it.next();
        const QString target = fetchRealImgPath(m.captured(2)).trimmed();
        if (target.isEmpty() || startsWithWebScheme(target))
            continue;
        QString source;
        for (const QString &candidate : linkTargetCandidates(target)) {
            const QFileInfo fi(QDir::isAbsolutePath(candidate) ? candidate : folder.filePath(candidate));
            if (fi.isFile()) {
                source = fi.absoluteFilePath();
                break;
            }
        }
        if (source.isEmpty())
            continue;
        // The link keeps the name as written (encoded, if it was); the copy
        // takes the file's real name, which that link resolves to.
        const QString prefix = QStringLiteral("media/%1/").arg(docUUID);
        out += QStringView(text).sliced(copied, m.capturedStart(2) - copied);
        out += prefix + writtenFileName(target);
        copied = m.capturedEnd(2);
        if (imgURLs)
            imgURLs->append({source, prefix + QFileInfo(source).fileName()});
    }
    out += QStringView(text).sliced(copied);
    return out;
}

std::optional<ORVDBArticle> ORVLibraryDocuments::doImportToLibraryByURLCatIsImgToLib(const QString &path,
                                                                                     qint64 targetCatUUID,
                                                                                     bool isImgToLib)
{
    std::optional<QString> text = readTextFileDetectingEncoding(path);
    if (!text)
        return std::nullopt;
    const ORVDBArticle art = ORVDBArticle::newDocumentArticle();
    QList<ORVImportMediaRecord> media;
    if (isImgToLib)
        *text = makeLibraryStyleImagesURLsWithString(*text, art.uuid(), path, &media);
    const QString file = ORVLibraryFolder::documentPath(m_libraryPath, art.uuid());
    if (!orvoWriteFileAtomically(file, text->toUtf8(), nullptr, m_inBatch ? FileSync::Later : FileSync::Now))
        return std::nullopt;
    // The row and its category together: the document is new, so its
    // category links need no comparing with links it does not have.
    const QList<qint64> cats = targetCatUUID > 0 ? QList<qint64>{targetCatUUID} : QList<qint64>();
    if (!m_manager->insertItemDBArticleWithCatIIDS(art, cats) &&
        !m_manager->itemDBArticleWithUUID(art.uuid()))
        return std::nullopt; // the file stays: the stray document pass registers it later
    const QDir docs(docsPath());
    for (const ORVImportMediaRecord &record : std::as_const(media)) {
        const QString destination = docs.filePath(record.libPath);
        QDir().mkpath(QFileInfo(destination).absolutePath());
        QFile::copy(record.srcFullPath, destination); // an existing copy wins; a failure keeps the link
    }
    return art;
}

ORVLibraryDocuments::ImportResult ORVLibraryDocuments::importToLibrary(const QStringList &paths, qint64 targetCatUUID)
{
    static const QStringList folderTypes{QStringLiteral("md"), QStringLiteral("markdown"), QStringLiteral("txt")};
    ImportResult result;
    if (ORVLibraryFolder::libraryModeDocsURLByLibURL(m_libraryPath).isEmpty()) {
        result.failed = paths;
        return result;
    }
    // The files first, so that the rows can go in one transaction.
    QList<QPair<QString, bool>> files; // path, rewrite its links
    for (const QString &path : paths) {
        const QFileInfo fi(path);
        if (fi.isFile()) {
            if (importPanelFileTypes().contains(fi.suffix().toLower()))
                files.append({fi.absoluteFilePath(), false});
            else
                result.skipped << path;
        } else if (fi.isDir()) {
            for (const QString &file : folderImportCandidates(fi.absoluteFilePath(), folderTypes))
                files.append({file, true});
        } else {
            result.skipped << path;
        }
    }
    m_inBatch = true;
    m_manager->performInTransaction([&](FMDatabase &) {
        for (const auto &[file, rewrite] : std::as_const(files)) {
            if (const auto art = doImportToLibraryByURLCatIsImgToLib(file, targetCatUUID, rewrite))
                result.imported << *art;
            else
                result.failed << file;
        }
        // The files must be on disk before the rows that name them are.
        orvoSyncFileSystemOf(docsPath());
    });
    m_inBatch = false;
    if (!result.imported.isEmpty()) {
        if (m_tree)
            m_tree->updateLibraryCategoryWithAllCats(false);
        postListReload();
    }
    return result;
}

// ---- export

void ORVLibraryDocuments::exportTheDocumentMedia(const ORVDBArticle &art, const QString &saveDir,
                                                 const QString &libraryPath)
{
    const QDir docs(QDir(libraryPath).filePath(QStringLiteral("docs")));
    const QDir target(saveDir);
    const QString mediaRelative = QStringLiteral("media/%1").arg(art.uuid());
    const QDir media(docs.filePath(mediaRelative));
    const QFileInfoList entries =
        media.exists() ? media.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden) : QFileInfoList();
    if (!entries.isEmpty()) {
        target.mkpath(mediaRelative);
        for (const QFileInfo &entry : entries)
            orvoCopyPathIfMissing(entry.absoluteFilePath(), target.filePath(mediaRelative + QLatin1Char('/') + entry.fileName()));
    }
    for (const QString &relative : art.otherMediaPaths()) {
        const QString clean = QDir::cleanPath(relative);
        // Only what lies inside docs/ travels, and only to inside saveDir.
        if (clean.isEmpty() || QDir::isAbsolutePath(clean) || clean.startsWith(QLatin1String("..")))
            continue;
        const QString source = docs.filePath(clean);
        if (!QFileInfo::exists(source))
            continue;
        const QString destination = target.filePath(clean);
        target.mkpath(QFileInfo(destination).path());
        orvoCopyPathIfMissing(source, destination);
    }
}

ORVLibraryDocuments::ExportResult ORVLibraryDocuments::exportDocumentsToMarkdown(
    const QList<ORVLibraryListDataItem> &rows, const QString &exportDir)
{
    ExportResult result;
    const QDir dir(exportDir);
    for (const ORVLibraryListDataItem &row : rows) {
        if (row.isGroup)
            continue;
        exportTheDocumentMedia(row.art, exportDir, m_libraryPath);
        const QString source = ORVLibraryFolder::documentPath(m_libraryPath, row.art.uuid());
        if (!QFileInfo(source).isFile()) {
            result.failed << source;
            continue;
        }
        QString title = row.title();
        if (title.isEmpty())
            title = documentTitleAndSummaryWithFile(source).title;
        const QString name = exportBaseName(title, row.art.uuid());
        QString destination = dir.filePath(name + QStringLiteral(".md"));
        for (qint64 n = 1; QFileInfo::exists(destination) || QFileInfo(destination).isSymLink(); ++n)
            destination = dir.filePath(QStringLiteral("%1-%2.md").arg(name).arg(n));
        if (QFile::copy(source, destination))
            result.written << destination;
        else
            result.failed << source;
    }
    return result;
}
