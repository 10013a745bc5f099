#pragma once

#include <vector>

#include "support/Sample.h"

namespace Morvik::sql::bench {

inline constexpr const char* InsertRow = "INSERT INTO sample VALUES (?,?,?,?)";
inline constexpr const char* UpdateRow = "UPDATE sample SET measure=?, label=?, bytes=? WHERE number=?";
inline constexpr const char* SelectRow = "SELECT * FROM sample WHERE number=?";

/// The base of a contender that binds values to prepared statements. `Contender` defines what its library does:
///
///     Execute(sql)               executes a text
///     Inserter(), Updater()      prepares a statement, and returns a function that executes it with a SampleRow
///     Finder()                   the same for a query, with a number and the Rows to which the result is added
///     ForEachRow(sql, action)    calls `action` with every row of a query, by default a SampleRow
template <typename Contender>
class BoundContender {
public:
    using Write = std::vector<SampleRow>;
    using Rows = std::vector<SampleRow>;
    using Change = SampleRow;
    using Query = int;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return rows; }
    static Change MakeChange(const SampleRow& row) { return row; }
    static Query MakeQuery(int number) { return number; }
    static Totals SumOf(const Rows& rows) { return Sum(rows); }

    template <typename Values>
    void Insert(const Values& write)
    {
        Self().Execute("BEGIN");
        Self().InsertBound(write);
        Self().Execute("COMMIT");
    }

    void InsertBound(const std::vector<SampleRow>& rows)
    {
        auto insert = Self().Inserter();
        for (const SampleRow& row : rows) {
            insert(row);
        }
    }

    void InsertEach(const std::vector<Write>& writes)
    {
        auto insert = Self().Inserter();
        for (const Write& write : writes) {
            insert(write.front());
        }
    }

    void UpdateEach(const std::vector<Change>& changes)
    {
        auto update = Self().Updater();
        for (const Change& row : changes) {
            update(row);
        }
    }

    void Read(const std::string& sql, Rows& rows)
    {
        Self().ForEachRow(sql, [&](const auto& row) { rows.push_back(Contender::RowOf(row)); });
    }

    Totals Walk(const std::string& sql)
    {
        Totals totals;
        Self().ForEachRow(sql, [&](const auto& row) { Contender::AddTo(totals, row); });
        return totals;
    }

    Totals LookUp(const std::vector<Query>& queries)
    {
        Totals totals;
        auto find = Self().Finder();
        for (const Query number : queries) {
            Rows rows;
            find(number, rows);
            totals += SumOf(rows);
        }
        return totals;
    }

    static const SampleRow& RowOf(const SampleRow& row) { return row; }
    static void AddTo(Totals& totals, const SampleRow& row) { totals.Add(row); }

private:
    Contender& Self() { return static_cast<Contender&>(*this); }
};

} // namespace Morvik::sql::bench
