#pragma once

#include <QString>

#include <optional>

class ORVDBManager;

// A library on disk: a folder holding mainlib.db, docs/<uuid>.md for each
// document (docs/media/<uuid>/ for its media) and metadata/ for small
// per-library files. All paths here are explicit; resolving "the main
// library" is the application object's business.
class ORVLibraryFolder
{
public:
    static QString databasePath(const QString &libraryPath);          // <lib>/mainlib.db
    static QString documentPath(const QString &libraryPath, qint64 uuid); // <lib>/docs/<uuid>.md

    // checkIsLibraryWithURL: both docs and mainlib.db exist. Their content
    // is not inspected (see checkLibraryDatabase for that).
    static bool checkIsLibraryWithURL(const QString &libraryPath);

    // docs/ and metadata/ of the library, made with their parents when
    // missing; "" when they cannot be made.
    static QString libraryModeDocsURLByLibURL(const QString &libraryPath);
    static QString libraryModeMetaDataURLByLibURL(const QString &libraryPath);

    // Whether the library's database can be used: a SQLite file holding the
    // five tables with the columns the store reads and writes. Opens the file
    // read-only and changes nothing. nullopt when usable, otherwise the
    // reason, as a sentence naming mainlib.db ("mainlib.db is not a SQLite
    // database", "mainlib.db lacks the table \"tag\"", ...).
    static std::optional<QString> checkLibraryDatabase(const QString &libraryPath);

    // libraryModeSetupMainDatabase: makes the library's database as the
    // first run does. An existing mainlib.db goes to the user's trash first
    // (if it cannot, nothing changes and the answer is false). Then the
    // schema, the first category "Orvo" (sort 10), and the welcome document
    // docs/<uuid>.md with `welcomeText`, linked to that category. On false,
    // `error` says what failed; a database whose schema failed is removed
    // again, so that a failed set-up never leaves a half library behind.
    static bool libraryModeSetupMainDatabase(const QString &libraryPath, const QString &welcomeText,
                                             QString *error = nullptr);

    // The stray document pass: every docs/<number>.md without a row gets one
    // (an uncategorized normal document whose dateAdd comes from its id), so
    // files that arrive by a sync service or by hand show up. Names must be
    // digits only, with a value above 146143050845 (ids of 1984 on), and the
    // extension "md"; anything else is left alone. Runs on its own
    // connection (FMDatabaseQueue), so a worker may call it. Returns how
    // many documents it registered, or -1 when the database could not be
    // read.
    static int registerStrayDocuments(ORVDBManager &manager, const QString &libraryPath);

    // The smallest stem that names a document file: ids are times in
    // 1/10000 s, and this one lies in 1984, before any library existed.
    static constexpr qint64 kMinimumDocumentUUID = 146143050845;
};
