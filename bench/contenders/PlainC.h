#pragma once

#include "support/Sample.h"

#include <sql/DbTableData.h>

#include <string>
#include <vector>

struct sqlite3;

namespace Morvik::sql::bench {

/// The floor: the least that a careful program has to do for each job with SQLite's own interface. What it writes is
/// text that was made before the clock started; what it reads it keeps in the same rows as the facade.
class PlainC {
public:
    static constexpr const char* Name = "C";

    using Write = std::string;
    using Rows = DbTableData;
    using Query = std::string;
    using Change = std::string;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return InsertText(rows); }
    static Query MakeQuery(int number) { return SelectByNumber(number); }
    static Change MakeChange(const SampleRow& row) { return UpdateText(row); }
    static Totals SumOf(const Rows& rows);
    static void OpenAndClose(const std::string& path);

    /// Asks for the status of the file, which whoever creates missing directories and refuses named pipes has to.
    static void RequireFile(const std::string& path);

    /// Does that before.
    static void OpenAndCloseFile(const std::string& path);

    explicit PlainC(const std::string& path);
    ~PlainC();

    PlainC(const PlainC&) = delete;
    PlainC& operator=(const PlainC&) = delete;

    void Execute(const std::string& sql);
    void Insert(const Write& write) { Execute(write); }
    void InsertEach(const std::vector<Write>& writes);
    void UpdateEach(const std::vector<Change>& changes);
    void Read(const std::string& sql, Rows& rows);
    Totals LookUp(const std::vector<Query>& queries);
    Totals Walk(const std::string& sql);
    void InsertBound(const std::vector<SampleRow>& rows);
    Totals ReadColumns(int times);

private:
    sqlite3* m_handle = nullptr;
};

} // namespace Morvik::sql::bench
