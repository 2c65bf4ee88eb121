#pragma once

// Internal to the SQLite wrapper: the prepared statement that an FMResultSet
// reads and that its FMDatabase finalizes when it closes first.
#include <sqlite3.h>

namespace orvo::sqlite {

struct Statement {
    sqlite3_stmt *stmt = nullptr;
    bool hasRow = false; // the last step produced a row

    ~Statement() { finalize(); }
    void finalize()
    {
        if (stmt)
            sqlite3_finalize(stmt);
        stmt = nullptr;
        hasRow = false;
    }
};

} // namespace orvo::sqlite
