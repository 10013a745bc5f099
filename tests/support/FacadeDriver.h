#pragma once

#include <sql/DatabaseApi.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/Cells.h"
#include "support/ReferenceFacade.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

/// Everything that a caller sees of one operation.
struct StepOutcome {
    std::string operation{};
    bool succeeded = false;
    int code = 0;
    std::string message{};

    /// The results of the operation, such as rows, each as one text.
    std::vector<std::string> results{};

    /// Whether the database is open and the facade reports success, and the row of the driver's iterator.
    std::string state{};

    friend bool operator==(const StepOutcome&, const StepOutcome&) = default;
};

inline std::string TextOf(const StepOutcome& outcome)
{
    std::string text = outcome.operation + ": " + (outcome.succeeded ? "succeeded" : "failed") + " with " +
                       std::to_string(outcome.code) + " \"" + outcome.message + "\" " + outcome.state;
    for (const std::string& result : outcome.results) {
        text += "\n    " + result;
    }
    return text;
}

/// Describes both outcomes if they differ; empty if they are equal.
inline std::string Difference(const StepOutcome& actual, const StepOutcome& expected)
{
    return actual == expected ? "" : TextOf(actual) + "\n  in place of\n" + TextOf(expected);
}

inline std::string RowText(const DbTableRowValues& row)
{
    std::string text;
    for (const std::string& cell : CellTexts(row)) {
        text += '[' + cell + ']';
    }
    return text;
}

/// Runs operations on a facade, DatabaseApi or ReferenceFacade, and returns what each of them gave. Equal steps on
/// equal files must give equal outcomes with both facades.
template <typename Facade>
class FacadeDriver {
public:
    /// `directory` is put before every path that does not begin with a colon, and left out of every message.
    explicit FacadeDriver(std::string directory = {}) : m_directory(std::move(directory)) {}

    StepOutcome Open(const std::string& path, bool readOnly)
    {
        const std::string file = path.starts_with(':') ? path : m_directory + path;
        return Note("OpenDatabase " + path, m_facade.OpenDatabase(file, readOnly));
    }

    StepOutcome Close() { return Note("CloseDatabase", m_facade.CloseDatabase()); }
    StepOutcome Execute(const std::string& sql) { return Note("Execute " + sql, m_facade.Execute(sql)); }
    StepOutcome Drop(const std::string& table) { return Note("DropTable " + table, m_facade.DropTable(table)); }

    StepOutcome Create(const DbTableDefinition& definition)
    {
        return Note("CreateTable " + ReferenceCreateStatement(definition), m_facade.CreateTable(definition));
    }

    StepOutcome Alter(const std::string& table, const std::string& newName)
    {
        return Note("AlterTable " + table + " to " + newName, m_facade.AlterTable(table, newName));
    }

    StepOutcome Write(const std::string& table, const DbTableDataWrite& data)
    {
        return Note("WriteTableValues " + table, m_facade.WriteTableValues(table, data));
    }

    StepOutcome Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
    {
        return Note("UpdateTableValues " + table + ' ' + condition, m_facade.UpdateTableValues(table, data, condition));
    }

    StepOutcome Exists(const std::string& table)
    {
        int result = -1;
        const bool exists = m_facade.ExistsTable(table, result);
        return Note("ExistsTable " + table, exists, {std::to_string(result)});
    }

    StepOutcome Count(const std::string& table, const std::string& condition)
    {
        int result = -1;
        const int count = m_facade.ExistData(table, condition, result);
        return Note("ExistData " + table + ' ' + condition, result == 0,
                    {std::to_string(count), std::to_string(result)});
    }

    StepOutcome Read(const std::string& sql)
    {
        m_data.rows.clear();
        return NoteRows("ReadValues " + sql, m_facade.ReadValues(sql, m_data));
    }

    StepOutcome ReadTable(const std::string& table)
    {
        m_data.rows.clear();
        return NoteRows("ReadTableValues " + table, m_facade.ReadTableValues(table, m_data));
    }

    /// The rows of the last Read() or ReadTable().
    const DbTableData& Data() const { return m_data; }

    bool IsOpen() const { return m_facade.IsOpen(); }

    StepOutcome Begin(const std::string& sql) { return Note("SqlQueryBegin " + sql, m_facade.SqlQueryBegin(sql)); }
    StepOutcome CloseTable() { return Note("CloseReadTable", m_facade.CloseReadTable()); }

    /// Releases the cursor and closes the database.
    StepOutcome CloseAll()
    {
        const StepOutcome released = CloseTable();
        const bool closed = m_facade.CloseDatabase();
        return Note("CloseDatabase", closed, {TextOf(released)});
    }

    /// A failed call keeps the row of the previous call.
    StepOutcome ReadNext()
    {
        const bool read = m_facade.ReadNextRow(m_row);
        return Note("ReadNextRow", read, {RowText(m_row)});
    }

    StepOutcome FirstRow()
    {
        m_iterator.emplace(m_facade.begin());
        return Note("begin", IsOnRow());
    }

    /// Advances the iterator if it is on a row.
    StepOutcome AdvanceIterator()
    {
        if (IsOnRow()) {
            ++*m_iterator;
        }
        return Note("Advance", IsOnRow());
    }

    /// Reads a query with ReadNextRow() to its end. Stops at a number of rows that only a damaged file has.
    StepOutcome Walk(const std::string& sql)
    {
        constexpr std::size_t MostRows = 2000;
        std::vector<std::string> steps{TextOf(Begin(sql))};
        for (bool onRow = true; onRow && steps.size() < MostRows;) {
            const StepOutcome step = ReadNext();
            steps.push_back(TextOf(step));
            onRow = step.succeeded;
        }
        return Note("Walk through " + sql, m_facade.Succeeded(), std::move(steps));
    }

    /// Reads a query with a range-for.
    StepOutcome Iterate(const std::string& sql)
    {
        std::vector<std::string> steps{TextOf(Begin(sql))};
        for (const DbTableRowValues& row : m_facade) {
            steps.push_back(RowText(row));
        }
        return Note("Iterate over " + sql, m_facade.Succeeded(), std::move(steps));
    }

    StepOutcome Prepare(const std::string& sql)
    {
        const auto command = m_facade.PrepareStatement(sql);
        return Note("PrepareStatement " + sql, command.GetLastError() == 0,
                    {std::to_string(command.GetLastError()), command.GetLastErrorMsg()});
    }

    /// Binds the text to the statement's parameter, steps to the end and finalizes.
    StepOutcome RunPrepared(const std::string& sql, const std::string& parameter)
    {
        auto command = m_facade.PrepareStatement(sql);
        std::vector<std::string> steps;
        const auto note = [&](const char* step, bool succeeded) {
            steps.push_back(TextOf({step, succeeded, command.GetLastError(), command.GetLastErrorMsg()}));
            return succeeded;
        };
        note("prepare", command.GetLastError() == 0);
        note("bind", command.BindText(1, parameter));
        while (note("step", command.Step()) && command.HasRowData()) {
            steps.push_back(command.ColumnText(0));
        }
        const bool succeeded = command.GetLastError() == 101;
        note("finalize", command.Finalize());
        return Note("Prepared " + sql, succeeded, std::move(steps));
    }

private:
    bool IsOnRow() { return m_iterator && *m_iterator != m_facade.end(); }

    StepOutcome NoteRows(std::string operation, bool succeeded)
    {
        std::vector<std::string> rows(m_data.rows.size());
        std::ranges::transform(m_data.rows, rows.begin(), RowText);
        return Note(std::move(operation), succeeded, std::move(rows));
    }

    StepOutcome Note(std::string operation, bool succeeded, std::vector<std::string> results = {})
    {
        std::string message = m_facade.GetLastErrorMsg();
        if (const auto found = message.find(m_directory); found != std::string::npos) {
            message.erase(found, m_directory.size());
        }
        std::string state = m_facade.IsOpen() ? "open" : "closed";
        state += std::string(m_facade.Succeeded() ? ", Succeeded" : "") + (m_facade.Failed() ? ", Failed" : "");
        state += IsOnRow() ? ", on " + RowText(**m_iterator) : "";
        return {std::move(operation), succeeded,          m_facade.GetLastError(),
                std::move(message),   std::move(results), std::move(state)};
    }

    std::string m_directory;
    Facade m_facade;
    DbTableData m_data;
    DbTableRowValues m_row;
    std::optional<decltype(std::declval<Facade&>().begin())> m_iterator;
};

} // namespace Morvik::sql::tests
