#include "faults/storage/WriteBatches.h"

#include <sql/DatabaseApi.h>

#include <iterator>

#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t MostTables = 3;
constexpr std::size_t MostRows = 60;

} // namespace

std::string WriteBatches::AnyTable()
{
    return std::next(m_tables.begin(), static_cast<std::ptrdiff_t>(m_choices.Below(m_tables.size())))->first;
}

// Some texts are longer than a page.
std::string WriteBatches::AnyText()
{
    const std::size_t longest = m_choices.OneIn(8) ? 6000 : 300;
    return std::string(m_choices.Below(longest), static_cast<char>('A' + m_choices.Below(26)));
}

DatabaseContent WriteBatches::Content() const
{
    DatabaseContent content;
    for (const auto& [table, rows] : m_tables) {
        auto& written = content[table];
        for (const auto& [id, note] : rows) {
            written.push_back({std::to_string(id), "'" + note + "'"});
        }
    }
    return content;
}

template <typename Written>
void WriteBatches::AddRows(const std::string& table, Written written)
{
    for (std::size_t rows = 1 + m_choices.Below(20); rows > 0; --rows) {
        const std::string text = AnyText();
        m_tables[table][++m_rows] = text;
        written(m_rows, text);
    }
}

WriteBatch WriteBatches::Next()
{
    if (m_tables.empty() || (m_tables.size() < MostTables && m_choices.OneIn(6))) {
        return Create();
    }
    switch (m_choices.Below(10)) {
    case 0:
    case 1:
    case 2:
        return Update();
    case 3:
        return Alter();
    case 4:
        return Drop();
    case 5:
    case 6:
        return Transaction();
    default:
        return Write();
    }
}

WriteBatch WriteBatches::Create()
{
    DbTableDefinition definition;
    definition.name = NewName();
    definition.columns = {{"id", DbTableColumnType::Integer, 0, PrimaryKey}, {"note", DbTableColumnType::Text}};
    m_tables[definition.name] = {};
    return {[=](DatabaseApi& facade) { return facade.CreateTable(definition); }, {Content()}};
}

WriteBatch WriteBatches::Write()
{
    const std::string table = AnyTable();
    if (m_tables[table].size() > MostRows) {
        return Drop();
    }
    DbTableDataWrite data{{"id", "note"}, {}};
    AddRows(table, [&](int id, const std::string& text) { data.rows.push_back({{IntegerCell(id), TextCell(text)}}); });
    return {[=](DatabaseApi& facade) { return facade.WriteTableValues(table, data); }, {Content()}};
}

WriteBatch WriteBatches::Update()
{
    const std::string table = AnyTable();
    const std::string text = AnyText();
    const int divisor = 1 + static_cast<int>(m_choices.Below(5));
    for (auto& [id, note] : m_tables[table]) {
        note = id % divisor == 0 ? text : note;
    }
    const DbTableDataWrite data{{"note"}, {{{TextCell(text)}}}};
    const std::string condition = "WHERE id % " + std::to_string(divisor) + " = 0";
    return {[=](DatabaseApi& facade) { return facade.UpdateTableValues(table, data, condition); }, {Content()}};
}

WriteBatch WriteBatches::Alter()
{
    const std::string table = AnyTable();
    const std::string newName = NewName();
    auto renamed = m_tables.extract(table);
    renamed.key() = newName;
    m_tables.insert(std::move(renamed));
    return {[=](DatabaseApi& facade) { return facade.AlterTable(table, newName); }, {Content()}};
}

// The rows are deleted with a separate statement.
WriteBatch WriteBatches::Drop()
{
    const std::string table = AnyTable();
    WriteBatch batch{[=](DatabaseApi& facade) { return facade.DropTable(table); }, {}};
    m_tables[table].clear();
    batch.states.push_back(Content());
    m_tables.erase(table);
    batch.states.push_back(Content());
    return batch;
}

WriteBatch WriteBatches::Transaction()
{
    const std::string table = AnyTable();
    std::string sql = "BEGIN;DELETE FROM " + table + " WHERE id % 2 = 0";
    std::erase_if(m_tables[table], [](const auto& row) { return row.first % 2 == 0; });
    AddRows(table, [&](int id, const std::string& text) {
        sql += ";INSERT INTO " + table + " VALUES (" + std::to_string(id) + ",'" + text + "')";
    });
    sql += ";COMMIT";
    return {[=](DatabaseApi& facade) { return facade.Execute(sql); }, {Content()}};
}

} // namespace Morvik::sql::tests
