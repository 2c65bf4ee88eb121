#include "library/FMResultSet.h"

#include "library/sqlite_statement.h"

FMResultSet::FMResultSet(std::shared_ptr<orvo::sqlite::Statement> statement) : m_statement(std::move(statement)) {}

FMResultSet::~FMResultSet() { close(); }

FMResultSet::FMResultSet(FMResultSet &&other) noexcept
    : m_statement(std::move(other.m_statement)), m_columnNames(std::move(other.m_columnNames))
{
}

FMResultSet &FMResultSet::operator=(FMResultSet &&other) noexcept
{
    if (this != &other) {
        close();
        m_statement = std::move(other.m_statement);
        m_columnNames = std::move(other.m_columnNames);
    }
    return *this;
}

FMResultSet::operator bool() const { return m_statement != nullptr; }

sqlite3_stmt *FMResultSet::stmt() const { return m_statement ? m_statement->stmt : nullptr; }

bool FMResultSet::next()
{
    sqlite3_stmt *s = stmt();
    if (!s)
        return false;
    const int rc = sqlite3_step(s);
    m_statement->hasRow = rc == SQLITE_ROW;
    if (!m_statement->hasRow)
        close(); // done or failed: let go of the statement and its read lock
    return rc == SQLITE_ROW;
}

void FMResultSet::close()
{
    if (m_statement)
        m_statement->finalize();
    m_statement.reset();
}

int FMResultSet::columnCount() const { return stmt() ? sqlite3_column_count(stmt()) : 0; }

int FMResultSet::columnIndexForName(const QString &name) const
{
    sqlite3_stmt *s = stmt();
    if (!s)
        return -1;
    if (m_columnNames.isEmpty()) {
        const int n = sqlite3_column_count(s);
        m_columnNames.reserve(n);
        for (int i = 0; i < n; ++i)
            m_columnNames << QString::fromUtf8(sqlite3_column_name(s, i));
    }
    // A row has a few dozen columns at most: comparing names beats hashing
    // them, and rows are read by name thousands of times per list.
    for (qsizetype i = 0; i < m_columnNames.size(); ++i)
        if (m_columnNames.at(i) == name)
            return int(i);
    for (qsizetype i = 0; i < m_columnNames.size(); ++i)
        if (m_columnNames.at(i).compare(name, Qt::CaseInsensitive) == 0)
            return int(i);
    return -1;
}

QString FMResultSet::columnNameForIndex(int index) const
{
    return stmt() ? QString::fromUtf8(sqlite3_column_name(stmt(), index)) : QString();
}

namespace {

// Only a statement that stands on a row has values to read.
bool readable(sqlite3_stmt *s, const orvo::sqlite::Statement *st, int index)
{
    return s && st && st->hasRow && index >= 0 && index < sqlite3_column_count(s);
}

} // namespace

bool FMResultSet::columnIsNull(int index) const
{
    return !readable(stmt(), m_statement.get(), index) || sqlite3_column_type(stmt(), index) == SQLITE_NULL;
}

qint64 FMResultSet::longLongIntForColumn(int index) const
{
    return readable(stmt(), m_statement.get(), index) ? sqlite3_column_int64(stmt(), index) : 0;
}

int FMResultSet::intForColumn(int index) const { return int(longLongIntForColumn(index)); }

bool FMResultSet::boolForColumn(int index) const { return longLongIntForColumn(index) != 0; }

double FMResultSet::doubleForColumn(int index) const
{
    return readable(stmt(), m_statement.get(), index) ? sqlite3_column_double(stmt(), index) : 0.0;
}

QString FMResultSet::stringForColumn(int index) const
{
    if (columnIsNull(index))
        return QString();
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(stmt(), index));
    const int bytes = sqlite3_column_bytes(stmt(), index);
    // A present but empty text stays distinct from NULL.
    return text ? QString::fromUtf8(text, bytes) : QStringLiteral("");
}

QByteArray FMResultSet::dataForColumn(int index) const
{
    if (columnIsNull(index))
        return QByteArray();
    const void *blob = sqlite3_column_blob(stmt(), index);
    const int bytes = sqlite3_column_bytes(stmt(), index);
    return QByteArray(static_cast<const char *>(blob), bytes);
}

QVariant FMResultSet::objectForColumn(int index) const
{
    if (columnIsNull(index))
        return QVariant();
    switch (sqlite3_column_type(stmt(), index)) {
    case SQLITE_INTEGER: return QVariant(longLongIntForColumn(index));
    case SQLITE_FLOAT: return QVariant(doubleForColumn(index));
    case SQLITE_BLOB: return QVariant(dataForColumn(index));
    default: return QVariant(stringForColumn(index));
    }
}

QVariantMap FMResultSet::resultDictionary() const
{
    QVariantMap row;
    for (int i = 0; i < columnCount(); ++i)
        row.insert(columnNameForIndex(i), objectForColumn(i));
    return row;
}

bool FMResultSet::columnIsNull(const QString &name) const { return columnIsNull(columnIndexForName(name)); }
int FMResultSet::intForColumn(const QString &name) const { return intForColumn(columnIndexForName(name)); }
qint64 FMResultSet::longLongIntForColumn(const QString &name) const
{
    return longLongIntForColumn(columnIndexForName(name));
}
bool FMResultSet::boolForColumn(const QString &name) const { return boolForColumn(columnIndexForName(name)); }
double FMResultSet::doubleForColumn(const QString &name) const { return doubleForColumn(columnIndexForName(name)); }
QString FMResultSet::stringForColumn(const QString &name) const { return stringForColumn(columnIndexForName(name)); }
QByteArray FMResultSet::dataForColumn(const QString &name) const { return dataForColumn(columnIndexForName(name)); }
QVariant FMResultSet::objectForColumn(const QString &name) const { return objectForColumn(columnIndexForName(name)); }
