#pragma once

#include <sql/DatabaseApi.h>

#include <cstdint>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "support/Cells.h"
#include "support/DatabaseContent.h"
#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// A call that writes through the facade.
struct WriteBatch {
    /// Makes the call; returns whether the facade acknowledged it.
    std::function<bool(DatabaseApi&)> run;

    /// The content of the database after each statement of the call; the last is the content after a success.
    std::vector<DatabaseContent> states;
};

/// Calls in an order that a seed decides: new tables, rows, changes, renames, removals and complete transactions. Two
/// objects with the same seed give the same calls, so that one process knows what another process wrote.
class WriteBatches {
public:
    explicit WriteBatches(std::uint64_t seed) : m_choices(seed) {}

    /// The next call, for a database on which all earlier calls succeeded. The first call creates a table.
    WriteBatch Next()
    {
        if (m_content.empty() || (m_content.size() < MostTables && m_choices.OneIn(6))) {
            return Create();
        }
        using Call = WriteBatch (WriteBatches::*)();
        static constexpr Call Calls[] = {&WriteBatches::Update,      &WriteBatches::Update, &WriteBatches::Update,
                                         &WriteBatches::Alter,       &WriteBatches::Drop,   &WriteBatches::Transaction,
                                         &WriteBatches::Transaction, &WriteBatches::Write,  &WriteBatches::Write,
                                         &WriteBatches::Write};
        return (this->*Calls[m_choices.Below(std::size(Calls))])();
    }

private:
    using Row = std::vector<std::string>;

    static constexpr std::size_t MostTables = 3;
    static constexpr std::size_t MostRows = 60;

    WriteBatch Create()
    {
        DbTableDefinition definition;
        definition.name = NewName();
        definition.columns = {{"id", DbTableColumnType::Integer, 0, PrimaryKey}, {"note", DbTableColumnType::Text}};
        m_content[definition.name] = {};
        return {[=](DatabaseApi& facade) { return facade.CreateTable(definition); }, {m_content}};
    }

    WriteBatch Write()
    {
        const std::string table = AnyTable();
        if (m_content[table].size() > MostRows) {
            return Drop();
        }
        DbTableDataWrite data{{"id", "note"}, {}};
        AddRows(table, [&](int id, const std::string& text) {
            data.rows.push_back({{IntegerCell(id), TextCell(text)}});
        });
        return {[=](DatabaseApi& facade) { return facade.WriteTableValues(table, data); }, {m_content}};
    }

    WriteBatch Update()
    {
        const std::string table = AnyTable();
        const std::string text = AnyText();
        const int divisor = 1 + static_cast<int>(m_choices.Below(5));
        for (Row& row : m_content[table]) {
            row[1] = IsDivisible(row, divisor) ? Quoted(text) : row[1];
        }
        const DbTableDataWrite data{{"note"}, {{{TextCell(text)}}}};
        const std::string condition = "WHERE id % " + std::to_string(divisor) + " = 0";
        return {[=](DatabaseApi& facade) { return facade.UpdateTableValues(table, data, condition); }, {m_content}};
    }

    WriteBatch Alter()
    {
        const std::string table = AnyTable();
        const std::string newName = NewName();
        auto renamed = m_content.extract(table);
        renamed.key() = newName;
        m_content.insert(std::move(renamed));
        return {[=](DatabaseApi& facade) { return facade.AlterTable(table, newName); }, {m_content}};
    }

    // The rows are deleted with a separate statement.
    WriteBatch Drop()
    {
        const std::string table = AnyTable();
        WriteBatch batch{[=](DatabaseApi& facade) { return facade.DropTable(table); }, {}};
        m_content[table].clear();
        batch.states.push_back(m_content);
        m_content.erase(table);
        batch.states.push_back(m_content);
        return batch;
    }

    WriteBatch Transaction()
    {
        const std::string table = AnyTable();
        std::string sql = "BEGIN;DELETE FROM " + table + " WHERE id % 2 = 0";
        std::erase_if(m_content[table], [](const Row& row) { return IsDivisible(row, 2); });
        AddRows(table, [&](int id, const std::string& text) {
            sql += ";INSERT INTO " + table + " VALUES (" + std::to_string(id) + ",'" + text + "')";
        });
        sql += ";COMMIT";
        return {[=](DatabaseApi& facade) { return facade.Execute(sql); }, {m_content}};
    }

    std::string NewName() { return "t" + std::to_string(++m_names); }

    std::string AnyTable()
    {
        return std::next(m_content.begin(), static_cast<std::ptrdiff_t>(m_choices.Below(m_content.size())))->first;
    }

    // Some texts are longer than a page.
    std::string AnyText()
    {
        const std::size_t longest = m_choices.OneIn(8) ? 6000 : 300;
        return std::string(m_choices.Below(longest), static_cast<char>('A' + m_choices.Below(26)));
    }

    static std::string Quoted(const std::string& text) { return "'" + text + "'"; }
    static bool IsDivisible(const Row& row, int divisor) { return std::stoi(row[0]) % divisor == 0; }

    /// Adds up to twenty rows to the table and calls `written(id, text)` for each of them.
    template <typename Written>
    void AddRows(const std::string& table, Written written)
    {
        for (std::size_t rows = 1 + m_choices.Below(20); rows > 0; --rows) {
            const std::string text = AnyText();
            m_content[table].push_back({std::to_string(++m_rows), Quoted(text)});
            written(m_rows, text);
        }
    }

    FuzzInput m_choices;
    DatabaseContent m_content; // of the columns "id" and "note"
    int m_names = 0;
    int m_rows = 0;
};

} // namespace Morvik::sql::tests
