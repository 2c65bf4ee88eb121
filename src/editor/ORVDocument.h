#pragma once

#include "core/ORVTextViewStateData.h"
#include "editor/ORVTextStorage.h"
#include "library/ORVExternalCategoryItem.h"

#include <QByteArray>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <cstdint>
#include <optional>

class AppDelegate;

// Posted through ORVNotificationCenter after a document that is not a
// library document was saved; userInfo "doc" holds the ORVDocument (as a
// QObject pointer), so tabs can show its new name and state.
inline const QString kORVExternalTabsControlRearrageDataNotification =
    QStringLiteral("kORVExternalTabsControlRearrageDataNotification");

// One open Markdown document: its text, how its bytes are read and written,
// whether it belongs to a library or to an external folder, its title, and
// where its media goes.
//
// Reading keeps the encoding the file was read in (and its byte order mark)
// and a save writes the text back in it, so that a file nobody edited comes
// back byte for byte. A file whose bytes could not be decoded opens with an
// empty text and is never saved over: its original bytes are kept.
//
// Saving is atomic: the new bytes go to a temporary file beside the
// document, which then replaces it, so a crash or a full disk leaves the old
// file whole. A failed save keeps the text in memory.
//
// The application object is not owned and must outlive the document.
// Thread: the main thread.
class ORVDocument : public QObject
{
    Q_OBJECT
public:
    // The autosave interval.
    static constexpr int kAutosaveIntervalSeconds = 600;
    // A file named <number>.md may be a library document when the number is
    // above this: document ids are times in 1/10000 s, far above it.
    static constexpr qint64 kLibraryFileNumberFloor = 99999;
    // A document counts as a library document when its id is above this.
    // The two limits differ, and both are kept: a file number between them
    // is taken for a library file but not treated as a library document.
    static constexpr qint64 kLibraryDocumentUUIDFloor = 9999;

    // init: keeps the application object and starts the autosave timer.
    explicit ORVDocument(AppDelegate *appDel, QObject *parent = nullptr);
    ~ORVDocument() override;

    AppDelegate *appDel() const { return m_appDel; }

    // ---- The file

    // The document's file ("" for a document not saved yet).
    QString fileURL() const { return m_fileURL; }
    void setFileURL(const QString &path);
    // Changes made since the last save or read.
    bool hasUnautosavedChanges() const { return m_hasUnautosavedChanges; }
    void setHasUnautosavedChanges(bool changed) { m_hasUnautosavedChanges = changed; }

    // ---- Reading

    // readFromURL:ofType:error:. Finds out whether the file is a library
    // document, reads it (a byte order mark names the encoding, else it must
    // be UTF-8; other bytes go to readFromData), sets the text, makes the
    // path the document's file and records it as recent. False, with the
    // system's message, only when the file cannot be read at all.
    bool readFromURL(const QString &path, QString *error = nullptr);
    // readFromData:ofType:error:, for bytes whose encoding was not declared:
    // the encoding is guessed from their head; when they do not convert with
    // it, the text is left empty and the read still succeeds (see
    // isUndecodedDocument).
    bool readFromData(const QByteArray &data, QString *error = nullptr);
    // Reads the file again with the first way of reading; the text stays as
    // it was when that fails. Then the views highlight everything again.
    bool reloadDocumentFromDisk(QString *error = nullptr);
    // The platform's revert: the text as in the file, changes forgotten.
    bool revertToContentsOfURL(const QString &path, QString *error = nullptr);
    bool revertDocumentToSaved(QString *error = nullptr);

    // The encoding read from the file, reused on save; 0 when not known.
    std::uint32_t documentStringEncoding() const { return m_documentStringEncoding; }
    bool documentHasByteOrderMark() const { return m_documentHasByteOrderMark; }
    // The file's bytes could not be decoded: the text is empty and saving
    // over that file is refused.
    bool isUndecodedDocument() const { return m_undecoded; }

    // ---- Saving

    // dataOfType:error:: the bytes to write (the text without attachment
    // marks, in the document's encoding; 0 becomes UTF-8). For a library
    // document that is no quick note the library row is updated too: the
    // media of other documents it links to (`otherMedia`) and `dateModif`.
    // A missing row does not stop the bytes. Nothing, with the reason, when
    // the text cannot be represented in the encoding or the document was
    // not decoded.
    std::optional<QByteArray> dataOfType(QString *error = nullptr);
    // Writes the document to `path` atomically and makes it the document's
    // file. Refuses a read-only file and an undecoded document's own file.
    // Emits documentDidSave with the outcome either way.
    bool saveToURL(const QString &path, QString *error = nullptr);
    // saveDocumentWithDelegate:didSaveSelector:contextInfo: on the file.
    bool saveDocument(QString *error = nullptr);
    // Saves when there is a file and there are unsaved changes.
    void saveCurrentDocument();
    // The autosave timer's handler.
    void autoSaveDocumentIntervalHandler() { saveCurrentDocument(); }
    bool isAutosaveTimerActive() const { return m_timerAutoSaveDocuemntTimer.isActive(); }

    // ---- The text

    // textStorage: shared by every view of the document.
    ORVTextStorage *textStorage() { return &m_textStorage; }
    // The text with the attachment marks (U+FFFC, one per inline image)
    // removed: what goes into the file.
    QString documentPureMarkdownString() const;
    static QString removeUnkownCharWithString(const QString &text);

    // The title: for a library document the first paragraph without its
    // heading mark, or "Untitled" when that is empty; for any other the
    // file name without extension, or "" without a file.
    QString documentTitleRemoveMark() const;
    // The proposed name of a new file: "untitled" for an empty text, else
    // the first paragraph without its heading mark.
    QString theUnLibrarayDocuementDefaultTitle() const;

    // ---- Where the document belongs

    // checkDocumentIsInLibrary for the document's file, or `path`: a file
    // whose name without extension is a number above kLibraryFileNumberFloor
    // and whose folder's parent is a library in use sets libraryURL and
    // libraryDocumentUUID.
    void checkDocumentIsInLibrary(const QString &path = QString());
    // Set for a library document: its library and its id there.
    QString libraryURL() const { return m_libraryURL; }
    qint64 libraryDocumentUUID() const { return m_libraryDocumentUUID; }
    bool isLibraryDocument() const;
    // Whether the file lies in one of the external sources; on the first
    // source that holds it, sets externalCateroryItem.
    bool isExternalInnerDocument();
    ORVExternalCategoryItemPtr externalCateroryItem() const { return m_externalCateroryItem; }
    // Newlines become line breaks: the preference, unless the document's
    // external folder says 1 (on) or 2 (off).
    bool isMarkdownNewlineToBR();

    bool isQuickNoteDocument = false;
    bool isReRenderMarkdownPreviewHtml = false;
    QString previewAssetFullPath;
    QString markdownPreviewHtml;

    // ---- Media

    // mediaSaveURL:floderType:. The folder media of this document goes to
    // ("" when there is none); `mediaFolderName` and `folderType` receive
    // the name of the media folder and the folder's type when they are known.
    //   library document: the library's docs folder, name "media", no type
    //   external, type 11: the source folder; type 10: the document's folder;
    //   other type: none; the name and type from the folder's settings
    //   neither, or an external folder without settings: none, nothing set
    QString mediaSaveURLFloderType(std::optional<QString> *mediaFolderName,
                                   std::optional<std::uint64_t> *folderType);
    // An image path without its title: the text before the first space.
    static QString fetchRealImgPath(const QString &text);

    // ---- Library data, or the file's

    QStringList libraryDocumentCats();
    QStringList libraryDocumentTags();
    QDateTime documentCreateDate();
    QDateTime documentLastModifDate();

    // ---- State

    // encodeRestorableStateWithCoder: a library document keeps "libURL" and
    // "libDocUUID"; any other its file ("fileURL").
    QVariantMap encodeRestorableState() const;
    // restoreDocumentWindowWithIdentifier:state:: a state with "libURL"
    // sets the library fields before the rest of the restore.
    void restoreDocumentWindowWithState(const QVariantMap &state);

    // The editing position of the document's views, kept by the
    // application object under the document's path.
    std::optional<ORVTextViewStateData> textViewStateData() const;
    void setTextViewStateData(const ORVTextViewStateData &state);

    // ---- Rename

    // Renames the file in its folder; a name without extension gets ".md".
    // Refuses a name that is taken or has a "/". The text is not touched.
    bool renameDocumentWithName(const QString &newName, QString *error = nullptr);
    // How much of a proposed name the rename field selects: the name without
    // its extension when the extension has more than one character.
    static qsizetype renameSelectionLengthForName(const QString &name);

signals:
    // The outcome of a save (the platform's completion); `error` is the
    // system's message when it failed.
    void documentDidSave(bool ok, const QString &error);
    // highlightAllDocumentWindowControllers: every view parses its text
    // again (parseAllTextHihlightNow).
    void highlightAllDocumentWindowControllers();

private:
    void setTextFromRead(const QString &text);
    void recordAsRecent();
    void updateLibraryRowForSave(const QString &text);
    bool readFileBytes(const QString &path, QByteArray *bytes, QString *error) const;
    // dataOfType for a save to `target`.
    std::optional<QByteArray> dataForSaveToPath(const QString &target, QString *error);

    AppDelegate *m_appDel;
    QString m_fileURL;
    bool m_hasUnautosavedChanges = false;
    bool m_settingTextFromDisk = false;
    ORVTextStorage m_textStorage;
    QTimer m_timerAutoSaveDocuemntTimer;

    std::uint32_t m_documentStringEncoding = 0;
    bool m_documentHasByteOrderMark = false;
    bool m_undecoded = false;
    QString m_undecodedFilePath; // the file whose bytes were not decoded ("" for bytes without a file)

    QString m_libraryURL;
    qint64 m_libraryDocumentUUID = 0;
    ORVExternalCategoryItemPtr m_externalCateroryItem;
};
