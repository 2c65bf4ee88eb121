#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <memory>

struct sqlite3_stmt;
namespace orvo::sqlite {
struct Statement;
}

// The rows of one query, read one at a time with next(), by column name
// (case-insensitive) or index. A column that is NULL reads as 0, false, a
// null QString or an empty QByteArray.
//
// A result set is a view on its FMDatabase: it must not outlive it. Closing
// the database closes every result set still open on it; next() then
// answers false. Not copyable; movable. Thread: that of its database.
class FMResultSet
{
public:
    FMResultSet() = default;
    ~FMResultSet();
    FMResultSet(FMResultSet &&other) noexcept;
    FMResultSet &operator=(FMResultSet &&other) noexcept;
    FMResultSet(const FMResultSet &) = delete;
    FMResultSet &operator=(const FMResultSet &) = delete;

    // True while the result set can still give rows: false when the query
    // failed (the database's lastErrorMessage says why), after the last row,
    // and after close().
    explicit operator bool() const;

    // Steps to the next row; false at the end, on an error, or when closed.
    bool next();
    void close();

    int columnCount() const;
    // -1 when there is no such column.
    int columnIndexForName(const QString &name) const;
    QString columnNameForIndex(int index) const;

    bool columnIsNull(int index) const;
    bool columnIsNull(const QString &name) const;
    int intForColumn(int index) const;
    int intForColumn(const QString &name) const;
    qint64 longLongIntForColumn(int index) const;
    qint64 longLongIntForColumn(const QString &name) const;
    bool boolForColumn(int index) const;
    bool boolForColumn(const QString &name) const;
    double doubleForColumn(int index) const;
    double doubleForColumn(const QString &name) const;
    QString stringForColumn(int index) const;
    QString stringForColumn(const QString &name) const;
    QByteArray dataForColumn(int index) const;
    QByteArray dataForColumn(const QString &name) const;
    // The value with its stored type: qint64, double, QString, QByteArray
    // or an invalid QVariant for NULL.
    QVariant objectForColumn(int index) const;
    QVariant objectForColumn(const QString &name) const;
    // The current row as column name to objectForColumn.
    QVariantMap resultDictionary() const;

private:
    friend class FMDatabase;
    explicit FMResultSet(std::shared_ptr<orvo::sqlite::Statement> statement);
    sqlite3_stmt *stmt() const;

    std::shared_ptr<orvo::sqlite::Statement> m_statement;
    mutable QStringList m_columnNames; // by index, made on first look-up by name
};
