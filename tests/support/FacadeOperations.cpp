#include "support/FacadeOperations.h"

#include <fstream>
#include <optional>
#include <sstream>

#include "support/FacadeInputs.h"
#include "support/NumberLocales.h"
#include "support/PlainRendering.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

std::string Text(const DescribedRow& row)
{
    std::string text;
    for (const std::string& cell : row) {
        text += '[' + cell + ']';
    }
    return text;
}

std::string Text(const std::vector<DescribedRow>& rows)
{
    std::string text;
    for (const DescribedRow& row : rows) {
        text += Text(row) + '\n';
    }
    return text;
}

std::string Text(int number)
{
    return std::to_string(number);
}

std::vector<DescribedRow> Described(const DbTableData& data)
{
    std::vector<DescribedRow> rows;
    for (const DbTableRowValues& row : data.rows) {
        rows.push_back(tests::Described(row));
    }
    return rows;
}

} // namespace

FacadeOperations::FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale) : m_locale(locale)
{
    const auto place = [&](const char* name, bool directoryFails) {
        return Place{(directory / "facade" / name).string(), (directory / "model" / name).string(), directoryFails};
    };
    // The library creates missing directories; those of the model already exist.
    std::filesystem::create_directories(directory / "model" / "new" / "directory");
    for (const char* side : {"facade", "model"}) {
        std::filesystem::create_directories(directory / side / "a-directory");
        std::ofstream(directory / side / "no-database") << std::string(4096, 'x');
    }
    m_places = {place("main.db", false),
                place("main.db", false),
                place("new/directory/main.db", false),
                place("no-database", false),
                place("a-directory", false),
                place("no-database/main.db", false),
                place("no-database/in/x.db", true),
                {":memory:", ":memory:", false}};
}

template <typename Result>
std::string FacadeOperations::Compared(const std::string& operation, const Result& actual, const Result& expected) const
{
    if (actual != expected) {
        return operation + " gave " + Text(actual) + " in place of " + Text(expected);
    }
    return State(operation);
}

std::string FacadeOperations::State(const std::string& operation) const
{
    std::ostringstream difference;
    if (m_facade->GetLastError() != m_model->code || m_facade->GetLastErrorMsg() != m_model->message) {
        difference << operation << " left " << m_facade->GetLastError() << " \"" << m_facade->GetLastErrorMsg()
                   << "\" in place of " << m_model->code << " \"" << m_model->message << "\"\n";
    }
    if (m_facade->Succeeded() != (m_model->code == 0) || m_facade->Failed() == m_facade->Succeeded()) {
        difference << operation << " left a success and a failure at once\n";
    }
    if (m_facade->IsOpen() != m_model->IsOpen()) {
        difference << operation << " left the database " << (m_facade->IsOpen() ? "open\n" : "closed\n");
    }
    if (m_iterator != DbTableRowIterator() && m_iterator != m_facade->end() &&
        tests::Described(*m_iterator) != m_model->currentRow) {
        difference << operation << " left the current row " << Text(tests::Described(*m_iterator)) << " in place of "
                   << Text(m_model->currentRow) << '\n';
    }
    return difference.str();
}

std::string FacadeOperations::RunOne(FuzzInput& choices)
{
    switch (choices.Below(12)) {
    case 0:
        return Open(choices);
    case 1:
    case 2:
    case 3:
        return Manage(choices);
    case 4:
    case 5:
    case 6:
        return Write(choices);
    case 7:
    case 8:
        return Read(choices);
    default:
        return Walk(choices);
    }
}

std::string FacadeOperations::Open(FuzzInput& choices)
{
    if (choices.OneIn(4)) {
        return Compared<int>("CloseDatabase", m_facade->CloseDatabase(), m_model->CloseDatabase());
    }
    const Place& place = choices.Of(m_places);
    const bool readOnly = choices.OneIn(5);
    const std::string difference =
        Compared<int>("OpenDatabase " + place.facadePath, m_facade->OpenDatabase(place.facadePath, readOnly),
                      m_model->OpenDatabase(place.facadePath, place.modelPath, readOnly, place.directoryFails));
    if (!difference.empty() || !m_facade->IsOpen()) {
        return difference;
    }
    // These files need not survive a power failure, and waiting for the disk would take most of the time.
    const std::string unsynced = "PRAGMA synchronous = OFF";
    return Compared<int>("Execute " + unsynced, m_facade->Execute(unsynced), m_model->Execute(unsynced));
}

std::string FacadeOperations::Manage(FuzzInput& choices)
{
    const std::string table = ChosenTable(choices);
    int result = -1;
    int expectedResult = -1;
    switch (choices.Below(6)) {
    case 0: {
        const DbTableDefinition definition = ChosenDefinition(choices);
        return Compared<int>("CreateTable " + PlainCreateStatement(definition), m_facade->CreateTable(definition),
                             m_model->CreateTable(definition));
    }
    case 1: {
        const bool exists = m_facade->ExistsTable(table, result);
        const bool expected = m_model->ExistsTable(table, expectedResult);
        return Compared("ExistsTable " + table, DescribedRow{Text(exists), Text(result)},
                        DescribedRow{Text(expected), Text(expectedResult)});
    }
    case 2:
        return Compared<int>("DropTable " + table, m_facade->DropTable(table), m_model->DropTable(table));
    case 3: {
        const std::string newName = ChosenTable(choices);
        return Compared<int>("AlterTable " + table + " to " + newName, m_facade->AlterTable(table, newName),
                             m_model->AlterTable(table, newName));
    }
    case 4: {
        const std::string condition = ChosenCondition(choices);
        const int count = m_facade->ExistData(table, condition, result);
        const int expected = m_model->ExistData(table, condition, expectedResult);
        return Compared("ExistData " + table + " " + condition, DescribedRow{Text(count), Text(result)},
                        DescribedRow{Text(expected), Text(expectedResult)});
    }
    default: {
        const std::string sql = ChosenQuery(choices);
        const int code = m_facade->PrepareStatement(sql).GetLastError();
        return Compared("PrepareStatement " + sql, code, m_model->PrepareStatement(sql));
    }
    }
}

std::string FacadeOperations::Write(FuzzInput& choices)
{
    static const std::vector<NumberLocale> Locales = NumberLocales();
    static const std::vector<int> Roundings(std::begin(UnusualRoundings), std::end(UnusualRoundings));
    const std::string table = ChosenTable(choices);
    const DbTableDataWrite data = ChosenData(choices);
    const int operation = static_cast<int>(choices.Below(3));
    const std::string sql = operation == 0 ? ChosenCommand(choices) : ChosenCondition(choices);
    bool written = false;
    bool expected = false;
    {
        std::optional<ScopedGlobalLocale> locale;
        if (m_locale == GlobalLocale::Chosen && choices.OneIn(6)) {
            locale.emplace(choices.Of(Locales).locale);
        }
        const ScopedRounding rounding(choices.OneIn(12) ? choices.Of(Roundings) : FE_TONEAREST);
        switch (operation) {
        case 0:
            written = m_facade->Execute(sql);
            expected = m_model->Execute(sql);
            break;
        case 1:
            written = m_facade->WriteTableValues(table, data);
            expected = m_model->WriteTableValues(table, data);
            break;
        default:
            written = m_facade->UpdateTableValues(table, data, sql);
            expected = m_model->UpdateTableValues(table, data, sql);
        }
    }
    const char* const names[] = {"Execute ", "WriteTableValues ", "UpdateTableValues "};
    return Compared<int>(names[operation] + (operation == 0 ? sql : table + " " + sql), written, expected);
}

std::string FacadeOperations::Read(FuzzInput& choices)
{
    DbTableData data;
    std::vector<DescribedRow> expectedRows;
    const bool wholeTable = choices.OneIn(2);
    const std::string text = wholeTable ? ChosenTable(choices) : ChosenQuery(choices);
    const bool read = wholeTable ? m_facade->ReadTableValues(text, data) : m_facade->ReadValues(text, data);
    const bool expected =
        wholeTable ? m_model->ReadTableValues(text, expectedRows) : m_model->ReadValues(text, expectedRows);
    const std::string difference = Compared<int>("Reading " + text, read, expected);
    return difference.empty() ? Compared("Rows of " + text, Described(data), expectedRows) : difference;
}

std::string FacadeOperations::Walk(FuzzInput& choices)
{
    switch (choices.Below(5)) {
    case 0: {
        const std::string sql = ChosenQuery(choices);
        return Compared<int>("SqlQueryBegin " + sql, m_facade->SqlQueryBegin(sql), m_model->SqlQueryBegin(sql));
    }
    case 1: {
        const bool read = m_facade->ReadNextRow(m_row);
        const std::string difference = Compared<int>("ReadNextRow", read, m_model->ReadNextRow(m_modelRow));
        return difference.empty() ? Compared("Row of ReadNextRow", tests::Described(m_row), m_modelRow) : difference;
    }
    case 2: {
        m_iterator = m_facade->begin();
        const bool onRow = m_model->ReadNextRow(m_model->currentRow);
        return Compared<int>("begin", m_iterator != m_facade->end(), onRow);
    }
    case 3: {
        if (m_iterator == DbTableRowIterator() || m_iterator == m_facade->end()) {
            return {};
        }
        ++m_iterator;
        const bool onRow = m_model->ReadNextRow(m_model->currentRow);
        return Compared<int>("Advance", m_iterator != m_facade->end(), onRow);
    }
    default:
        return Compared<int>("CloseReadTable", m_facade->CloseReadTable(), m_model->CloseReadTable());
    }
}

std::string FacadeOperations::CompareFiles()
{
    m_facade.reset();
    m_model.reset();
    for (const Place& place : {m_places[0], m_places[2]}) {
        RawSqlite actual(place.facadePath.starts_with(':') || !std::filesystem::exists(place.facadePath)
                             ? ":memory:"
                             : place.facadePath);
        RawSqlite expected(std::filesystem::exists(place.modelPath) ? place.modelPath : ":memory:");
        const std::string schema = "SELECT type, name, sql FROM sqlite_master ORDER BY rowid";
        if (actual.Value("PRAGMA integrity_check") != "'ok'") {
            return place.facadePath + " is damaged";
        }
        const auto tables = expected.Rows("SELECT name FROM sqlite_master WHERE type = 'table'");
        if (actual.Rows(schema) != expected.Rows(schema)) {
            return place.facadePath + " holds another schema";
        }
        for (const auto& table : tables) {
            std::string name = table.front();
            name.front() = name.back() = '"';
            if (actual.Rows("SELECT * FROM " + name) != expected.Rows("SELECT * FROM " + name)) {
                return place.facadePath + " holds other rows in " + name;
            }
        }
    }
    return {};
}

} // namespace Morvik::sql::tests
