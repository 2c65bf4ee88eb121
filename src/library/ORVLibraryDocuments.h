#pragma once

#include "library/ORVDBArticle.h"
#include "library/ORVLibraryListDataItem.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class ORVCatTreeItem;
class ORVDBManager;
class ORVLibraryTree;

// A file an imported document refers to, and where its copy goes: the
// source's absolute path, and the copy's path inside docs/ (which is also
// the document's new link, "media/<uuid>/<name>").
struct ORVImportMediaRecord {
    QString srcFullPath;
    QString libPath;
};

// What happens on disk and in the database when library documents are
// made, deleted for good, imported and exported, in which order, and what a
// failed step leaves behind. Moving to and from the trash is a state change
// (ORVLibraryListController).
//
// Nothing here deletes a file: a document's file and media leave only to
// the user's trash (ORVSystemTrash), and only for documents in the
// library's trash.
//
// Thread: the main thread (the plain operations of ORVDBManager).
class ORVLibraryDocuments
{
public:
    // `tree` (may be null) is told of changed counts and tags.
    ORVLibraryDocuments(std::shared_ptr<ORVDBManager> manager, QString libraryPath, ORVLibraryTree *tree = nullptr);

    // "[title](orvolib://uuid)": a link to the document that the
    // application resolves.
    static QString noteLinkText(const QString &title, qint64 uuid);

    // newDocument: a document in `place`: a tag entry (kind 99) gives it
    // that tag, a database category that category, anything else (none,
    // "Inbox", "Recent", "Uncategorized", "Trash") no category. Its file
    // holds "# " and the title when one is given. nullopt, with a reason,
    // when the file cannot be written or the row not added (the file may
    // stay; the stray document pass registers it later).
    std::optional<ORVDBArticle> newDocument(const ORVCatTreeItem *place, const QString &title = {},
                                            QString *error = nullptr);

    // deleteDBArticlesWithArray: the final deletion. Only documents whose
    // `state` is 0 (in the trash) are deleted; others are left as they are.
    // For each: its file and media folder go to the user's trash (a missing
    // one is skipped), then its row and links go, and
    // kORVListViewControllerDeleteDocumentNotification is posted with "url".
    // A document whose file or media the trash refuses keeps its row, so
    // that nothing is lost and the deletion can be tried again.
    struct DeletionResult {
        QList<qint64> deleted;
        QList<qint64> notInTrash;
        QStringList errors; // one sentence per document that stayed
    };
    DeletionResult deleteDBArticlesWithArray(const QList<ORVDBArticle> &articles);

    // importToLibrary: imports files and folders into the category
    // targetCatUUID (0: none). A file is imported as it is (its links are
    // kept); it must have one of importPanelFileTypes. A folder gives its
    // files with the extension "md", "markdown" or "txt" (as spelled, lower
    // case), not descending into subfolders and skipping hidden files, in
    // the order of their file numbers, each with its links rewritten and
    // the files they point at copied. All rows are written in one
    // transaction.
    struct ImportResult {
        QList<ORVDBArticle> imported;
        QStringList failed;  // importable files that could not be imported
        QStringList skipped; // missing paths and files of other types
        bool isNothingImported() const { return imported.isEmpty(); }
    };
    ImportResult importToLibrary(const QStringList &paths, qint64 targetCatUUID);
    // The alert an import that imported nothing shows.
    static QString importNothingMessage();
    // The file types the import takes when files are chosen one by one.
    static const QStringList &importPanelFileTypes();

    // doImportToLibraryByURL:cat:isImgToLib: one file, as above.
    std::optional<ORVDBArticle> doImportToLibraryByURLCatIsImgToLib(const QString &path, qint64 targetCatUUID,
                                                                    bool isImgToLib);
    // makeLibraryStyleImagesURLsWithString:docUUID:docURL:imgURLs:. Every
    // link "[text](target)" whose target (without a title) is a file that
    // exists beside docPath becomes "media/<docUUID>/<name>"; web links and
    // links to nothing stay. The files to copy are appended to imgURLs.
    static QString makeLibraryStyleImagesURLsWithString(const QString &text, qint64 docUUID, const QString &docPath,
                                                        QList<ORVImportMediaRecord> *imgURLs);
    // fetchRealImgPath: a link target without its title (cut at ' "').
    static QString fetchRealImgPath(const QString &target);

    // exportDocumentsToMarkdown:exportURL: each document row (group rows are
    // skipped) is copied to exportDir as "<title>.md" ("/" in the title
    // becomes "-"; an empty title gives the uuid), or "<title>-1.md",
    // "-2"... when the name is taken, with its media beside it.
    struct ExportResult {
        QStringList written;
        QStringList failed; // documents whose file is missing or could not be copied
    };
    ExportResult exportDocumentsToMarkdown(const QList<ORVLibraryListDataItem> &rows, const QString &exportDir);
    // exportTheDocumentMedia:saveURL:libURL: copies docs/media/<uuid>/ to
    // saveDir/media/<uuid>/ and the files of `otherMedia` to the same
    // relative places under saveDir, skipping what is there already, so that
    // relative links stay valid beside the exported file.
    static void exportTheDocumentMedia(const ORVDBArticle &art, const QString &saveDir, const QString &libraryPath);

private:
    QString docsPath() const;
    void postListReload();

    std::shared_ptr<ORVDBManager> m_manager;
    QString m_libraryPath;
    ORVLibraryTree *m_tree;
    // Within an import the files are synced once, before the rows commit.
    bool m_inBatch = false;
};
