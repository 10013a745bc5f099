#pragma once

#include <ranges>
#include <string>
#include <vector>

#include "support/Sample.h"

namespace Morvik::sql::bench {

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
    static auto MakeBound(const std::vector<SampleRow>& rows) { return Contender::MakeWrite(rows); }
    static Change MakeChange(const SampleRow& row) { return row; }
    static Query MakeQuery(int number) { return number; }
    static Totals SumOf(const Rows& rows, const Totals& totals = {}) { return Sum(rows, totals); }

    void Insert(const auto& write)
    {
        Self().Execute("BEGIN");
        Self().InsertBound(write);
        Self().Execute("COMMIT");
    }

    void InsertBound(const std::vector<SampleRow>& rows) { ForEach(rows, Self().Inserter()); }
    void InsertEach(const std::vector<Write>& writes) { ForEach(writes | std::views::join, Self().Inserter()); }
    void UpdateEach(const std::vector<Change>& changes) { ForEach(changes, Self().Updater()); }
    Totals LookUp(const std::vector<Query>& queries) { return SumOfFound<Contender>(queries, Self().Finder()); }

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

    static const SampleRow& RowOf(const SampleRow& row) { return row; }
    static void AddTo(Totals& totals, const SampleRow& row) { totals.Add(row); }

private:
    Contender& Self() { return static_cast<Contender&>(*this); }

    static void ForEach(const auto& rows, auto action)
    {
        for (const SampleRow& row : rows) {
            action(row);
        }
    }
};

} // namespace Morvik::sql::bench
