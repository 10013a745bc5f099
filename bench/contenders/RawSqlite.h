#pragma once

#include <sql/DbTableData.h>

#include <string>
#include <vector>

#include "contenders/Library.h"
#include "support/Sample.h"

struct sqlite3;

namespace Morvik::sql::bench {

/// Does each job with as little work as a careful C program needs. Its SQL text is made before the clock starts, and it
/// keeps what it reads in the same row type as the facade.
class RawConnection {
public:
    using Write = std::string;
    using Rows = DbTableData;
    using Query = std::string;
    using Change = std::string;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return InsertText(rows); }
    static const std::vector<SampleRow>& MakeBound(const std::vector<SampleRow>& rows) { return rows; }
    static Query MakeQuery(int number) { return Library::MakeQuery(number); }
    static Change MakeChange(const SampleRow& row) { return UpdateText(row); }
    static Totals SumOf(const Rows& rows, Totals totals = {}) { return Library::SumOf(rows, totals); }
    static void OpenAndClose(const std::string& path) { const RawConnection connection(path); }

    /// Opens the database with SQLITE_OPEN_READWRITE, SQLITE_OPEN_CREATE and these flags of sqlite3_open_v2.
    explicit RawConnection(const std::string& path, int flags = 0);
    ~RawConnection();

    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void Execute(const std::string& sql);
    void Insert(const Write& write) { Execute(write); }
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes) { InsertEach(changes); }

    /// Binds each text and blob with SQLITE_TRANSIENT: SQLite makes a copy.
    void InsertBound(const std::vector<SampleRow>& rows);

protected:
    sqlite3* Handle() { return m_handle; }

private:
    sqlite3* m_handle = nullptr;
};

/// Reads with objects of the type `Cell`, each of which is one cell of the current row.
template <typename Cell>
class RawReader : public RawConnection {
public:
    using RawConnection::RawConnection;

    void Read(const std::string& sql, Rows& rows);
    Totals LookUp(const std::vector<Query>& queries)
    {
        return SumOfFound<RawReader>(queries, [this](const Query& query, Rows& rows) { Read(query, rows); });
    }
    Totals Walk(const std::string& sql);
    Totals ReadColumns(int times);
};

/// The reference gets one sqlite3_value per cell.
class RawSqlite : public RawReader<class CellByValue> {
public:
    static constexpr const char* Name = "C";

    using RawReader::RawReader;
};

/// Reads as most C programs do: with sqlite3_column_type, sqlite3_column_text and the other functions that take a
/// statement and a column.
class RawSqliteColumns : public RawReader<class CellByColumn> {
public:
    static constexpr const char* Name = "C, column_*";

    using RawReader::RawReader;
};

/// Inserts with a prepared statement. It binds texts and blobs with SQLITE_STATIC: SQLite reads the caller's memory.
class RawSqlitePrepared : private RawConnection {
public:
    static constexpr const char* Name = "C, prepared";

    using Write = std::vector<SampleRow>;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return rows; }

    using RawConnection::Execute;
    using RawConnection::MakeBound;
    using RawConnection::RawConnection;

    void Insert(const Write& write);
    void InsertBound(const std::vector<SampleRow>& rows);
    void InsertEach(const std::vector<Write>& writes);
};

/// The reference on a connection that takes no mutex (SQLITE_OPEN_NOMUTEX).
class RawSqliteNoMutex : public RawSqlite {
public:
    static constexpr const char* Name = "C, no mutex";

    static void OpenAndClose(const std::string& path) { const RawSqliteNoMutex connection(path); }

    explicit RawSqliteNoMutex(const std::string& path);
};

} // namespace Morvik::sql::bench
