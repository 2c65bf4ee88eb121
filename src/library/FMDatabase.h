#pragma once

#include "library/FMResultSet.h"

#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <vector>

struct sqlite3;

// A thin wrapper over one SQLite connection: open and close by path,
// statements with positional ("?") or named (":name") parameters, result
// sets, and scripts of several statements.
//
// Parameters are bound by type: an invalid QVariant or a null QString binds
// NULL, booleans and integers bind as 64-bit integers, doubles as reals,
// strings as UTF-8 text, byte arrays as blobs; anything else by its string
// form. Errors are values: a failed statement returns false or an invalid
// result set, and lastErrorMessage() tells why.
//
// Thread: one thread at a time (FMDatabaseQueue hands a connection to
// several threads in turn). Not copyable.
class FMDatabase
{
public:
    // Open flags, SQLite's own values, so callers need not include sqlite3.h.
    enum OpenFlag {
        OpenReadOnly = 0x00000001,
        OpenReadWrite = 0x00000002,
        OpenCreate = 0x00000004,
    };

    explicit FMDatabase(QString path);
    ~FMDatabase();
    FMDatabase(const FMDatabase &) = delete;
    FMDatabase &operator=(const FMDatabase &) = delete;

    const QString &databasePath() const { return m_path; }

    // Opens for reading and writing, making the file when it is missing.
    bool open();
    bool openWithFlags(int flags);
    // Closes the connection and every result set still open on it. True
    // when it was not open.
    bool close();
    bool isOpen() const { return m_db != nullptr; }
    // Whether the connection is open and answers a trivial query.
    bool goodConnection();
    sqlite3 *sqliteHandle() const { return m_db; }

    bool executeUpdate(const QString &sql, const QVariantList &arguments = {});
    bool executeUpdateWithParameterDictionary(const QString &sql, const QVariantMap &arguments);
    FMResultSet executeQuery(const QString &sql, const QVariantList &arguments = {});
    FMResultSet executeQueryWithParameterDictionary(const QString &sql, const QVariantMap &arguments);
    // Runs a script of statements separated by ";". Stops at the first
    // failing one; statements before it stay done (wrap the script in
    // BEGIN and COMMIT to make it all or nothing).
    bool executeStatements(const QString &script);

    qint64 lastInsertRowId() const;
    int changes() const;
    int lastErrorCode() const { return m_lastErrorCode; }
    QString lastErrorMessage() const { return m_lastErrorMessage; }
    bool hadError() const { return m_lastErrorCode != 0; }

    bool tableExists(const QString &tableName);

    // pragma user_version and pragma application_id.
    quint32 userVersion();
    bool setUserVersion(quint32 version);
    quint32 applicationID();
    bool setApplicationID(quint32 applicationID);

private:
    // A prepared statement with its parameters bound; null on failure.
    std::shared_ptr<orvo::sqlite::Statement> prepare(const QString &sql, const QVariantList *positional,
                                                     const QVariantMap *named);
    bool step(const std::shared_ptr<orvo::sqlite::Statement> &statement);
    void setError(int code, const QString &message);
    void clearError();
    quint32 pragmaNumber(const char *pragma);

    QString m_path;
    sqlite3 *m_db = nullptr;
    int m_lastErrorCode = 0;
    QString m_lastErrorMessage;
    std::vector<std::weak_ptr<orvo::sqlite::Statement>> m_openStatements;
};
