#include "library/FMDatabase.h"

#include "library/sqlite_statement.h"

#include <QFile>

using orvo::sqlite::Statement;

namespace {

// How long a statement waits for a lock another connection holds (a worker's
// queue, another Orvo process, a SQLite tool) before it fails with "database
// is locked". Writers hold the lock for milliseconds; a wait this long only
// runs out when the other side is stuck.
constexpr int kBusyTimeoutMs = 5000;

bool bindValue(sqlite3_stmt *stmt, int index, const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return sqlite3_bind_null(stmt, index) == SQLITE_OK;
    switch (value.typeId()) {
    case QMetaType::Bool:
        return sqlite3_bind_int64(stmt, index, value.toBool() ? 1 : 0) == SQLITE_OK;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return sqlite3_bind_int64(stmt, index, value.toLongLong()) == SQLITE_OK;
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        // Stored as the same 64 bits; read back with a cast to unsigned.
        return sqlite3_bind_int64(stmt, index, sqlite3_int64(value.toULongLong())) == SQLITE_OK;
    case QMetaType::Double:
    case QMetaType::Float:
        return sqlite3_bind_double(stmt, index, value.toDouble()) == SQLITE_OK;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return sqlite3_bind_blob64(stmt, index, bytes.constData(), sqlite3_uint64(bytes.size()), SQLITE_TRANSIENT) ==
               SQLITE_OK;
    }
    case QMetaType::QString:
        if (value.toString().isNull())
            return sqlite3_bind_null(stmt, index) == SQLITE_OK;
        [[fallthrough]];
    default: {
        const QByteArray utf8 = value.toString().toUtf8();
        return sqlite3_bind_text64(stmt, index, utf8.constData(), sqlite3_uint64(utf8.size()), SQLITE_TRANSIENT,
                                   SQLITE_UTF8) == SQLITE_OK;
    }
    }
}

} // namespace

FMDatabase::FMDatabase(QString path) : m_path(std::move(path)) {}

FMDatabase::~FMDatabase() { close(); }

bool FMDatabase::open() { return openWithFlags(OpenReadWrite | OpenCreate); }

bool FMDatabase::openWithFlags(int flags)
{
    if (m_db)
        return true;
    clearError();
    sqlite3 *db = nullptr;
    const int rc = sqlite3_open_v2(QFile::encodeName(m_path).constData(), &db, flags | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        setError(rc, db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString::fromUtf8(sqlite3_errstr(rc)));
        sqlite3_close_v2(db);
        return false;
    }
    sqlite3_busy_timeout(db, kBusyTimeoutMs);
    sqlite3_extended_result_codes(db, 1);
    m_db = db;
    return true;
}

bool FMDatabase::close()
{
    if (!m_db)
        return true;
    // Result sets still open would keep the connection alive; they end here.
    for (auto &weak : m_openStatements)
        if (auto st = weak.lock())
            st->finalize();
    m_openStatements.clear();
    const int rc = sqlite3_close_v2(m_db);
    m_db = nullptr;
    if (rc != SQLITE_OK) {
        setError(rc, QString::fromUtf8(sqlite3_errstr(rc)));
        return false;
    }
    return true;
}

bool FMDatabase::goodConnection()
{
    if (!m_db)
        return false;
    FMResultSet rs = executeQuery(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table'"));
    return bool(rs);
}

void FMDatabase::setError(int code, const QString &message)
{
    m_lastErrorCode = code;
    m_lastErrorMessage = message;
}

void FMDatabase::clearError()
{
    m_lastErrorCode = 0;
    m_lastErrorMessage.clear();
}

std::shared_ptr<Statement> FMDatabase::prepare(const QString &sql, const QVariantList *positional,
                                               const QVariantMap *named)
{
    clearError();
    if (!m_db) {
        setError(SQLITE_MISUSE, QStringLiteral("the database is not open"));
        return nullptr;
    }
    auto statement = std::make_shared<Statement>();
    const QByteArray utf8 = sql.toUtf8();
    const int rc = sqlite3_prepare_v2(m_db, utf8.constData(), int(utf8.size()), &statement->stmt, nullptr);
    if (rc != SQLITE_OK) {
        setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
        return nullptr;
    }
    if (!statement->stmt) { // only white space or a comment
        setError(SQLITE_MISUSE, QStringLiteral("empty statement"));
        return nullptr;
    }
    const int count = sqlite3_bind_parameter_count(statement->stmt);
    if (positional) {
        if (count != positional->size()) {
            setError(SQLITE_RANGE, QStringLiteral("the statement takes %1 parameters, %2 given: %3")
                                       .arg(count)
                                       .arg(positional->size())
                                       .arg(sql));
            return nullptr;
        }
        for (int i = 0; i < count; ++i) {
            if (!bindValue(statement->stmt, i + 1, positional->at(i))) {
                setError(sqlite3_errcode(m_db), QString::fromUtf8(sqlite3_errmsg(m_db)));
                return nullptr;
            }
        }
    } else if (named) {
        for (int i = 1; i <= count; ++i) {
            const char *rawName = sqlite3_bind_parameter_name(statement->stmt, i);
            // ":name", "@name" and "$name" all look up "name"; a missing
            // key leaves the parameter NULL.
            const QString name = rawName ? QString::fromUtf8(rawName + 1) : QString();
            const auto it = named->constFind(name);
            if (it != named->constEnd() && !bindValue(statement->stmt, i, *it)) {
                setError(sqlite3_errcode(m_db), QString::fromUtf8(sqlite3_errmsg(m_db)));
                return nullptr;
            }
        }
    }
    // Forget result sets that have ended, keep the ones still open.
    std::erase_if(m_openStatements, [](const std::weak_ptr<Statement> &w) { return w.expired(); });
    m_openStatements.push_back(statement);
    return statement;
}

bool FMDatabase::step(const std::shared_ptr<Statement> &statement)
{
    const int rc = sqlite3_step(statement->stmt);
    if (rc == SQLITE_DONE || rc == SQLITE_ROW)
        return true;
    setError(rc, QString::fromUtf8(sqlite3_errmsg(m_db)));
    return false;
}

bool FMDatabase::executeUpdate(const QString &sql, const QVariantList &arguments)
{
    auto statement = prepare(sql, &arguments, nullptr);
    return statement && step(statement);
}

bool FMDatabase::executeUpdateWithParameterDictionary(const QString &sql, const QVariantMap &arguments)
{
    auto statement = prepare(sql, nullptr, &arguments);
    return statement && step(statement);
}

FMResultSet FMDatabase::executeQuery(const QString &sql, const QVariantList &arguments)
{
    return FMResultSet(prepare(sql, &arguments, nullptr));
}

FMResultSet FMDatabase::executeQueryWithParameterDictionary(const QString &sql, const QVariantMap &arguments)
{
    return FMResultSet(prepare(sql, nullptr, &arguments));
}

bool FMDatabase::executeStatements(const QString &script)
{
    clearError();
    if (!m_db) {
        setError(SQLITE_MISUSE, QStringLiteral("the database is not open"));
        return false;
    }
    char *message = nullptr;
    const int rc = sqlite3_exec(m_db, script.toUtf8().constData(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        setError(rc, message ? QString::fromUtf8(message) : QString::fromUtf8(sqlite3_errstr(rc)));
        sqlite3_free(message);
        return false;
    }
    return true;
}

qint64 FMDatabase::lastInsertRowId() const { return m_db ? sqlite3_last_insert_rowid(m_db) : 0; }

int FMDatabase::changes() const { return m_db ? sqlite3_changes(m_db) : 0; }

bool FMDatabase::tableExists(const QString &tableName)
{
    FMResultSet rs = executeQuery(
        QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND lower(name)=lower(?)"), {tableName});
    return rs.next();
}

quint32 FMDatabase::pragmaNumber(const char *pragma)
{
    FMResultSet rs = executeQuery(QStringLiteral("PRAGMA %1").arg(QLatin1String(pragma)));
    return rs.next() ? quint32(rs.longLongIntForColumn(0)) : 0;
}

quint32 FMDatabase::userVersion() { return pragmaNumber("user_version"); }

bool FMDatabase::setUserVersion(quint32 version)
{
    // Pragmas take no parameters; the number is formatted, never text.
    return executeUpdate(QStringLiteral("PRAGMA user_version = %1").arg(version));
}

quint32 FMDatabase::applicationID() { return pragmaNumber("application_id"); }

bool FMDatabase::setApplicationID(quint32 applicationID)
{
    return executeUpdate(QStringLiteral("PRAGMA application_id = %1").arg(qint32(applicationID)));
}
