#include "support/FacadeOperations.h"

#include <fstream>

#include "support/FacadeInputs.h"
#include "support/NumberLocales.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

FacadeOperations::FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale)
    : m_locale(locale), m_libraryDirectory((directory / "library/").string()),
      m_referenceDirectory((directory / "reference/").string()), m_library(m_libraryDirectory),
      m_reference(m_referenceDirectory)
{
    for (const std::string& side : {m_libraryDirectory, m_referenceDirectory}) {
        std::filesystem::create_directories(side + "a-directory");
        std::ofstream(side + "no-database") << std::string(4096, 'x');
    }
}

template <typename Step>
std::string FacadeOperations::Compare(const Step& step)
{
    const StepOutcome actual = step(*m_library);
    return Difference(actual, step(*m_reference));
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
    static const std::vector<std::string> Paths{"main.db",
                                                "main.db",
                                                "new/directory/main.db",
                                                "no-database",
                                                "a-directory",
                                                "no-database/main.db",
                                                "no-database/in/x.db",
                                                ":memory:"};
    if (choices.OneIn(4)) {
        return Compare([](auto& side) { return side.Close(); });
    }
    const std::string& path = choices.Of(Paths);
    const bool readOnly = choices.OneIn(5);
    const std::string difference = Compare([&](auto& side) { return side.Open(path, readOnly); });
    // These files need not survive a power failure, and waiting for the disk would take most of the time.
    return !difference.empty() || !m_library->IsOpen()
               ? difference
               : Compare([](auto& side) { return side.Execute("PRAGMA synchronous = OFF"); });
}

std::string FacadeOperations::Manage(FuzzInput& choices)
{
    const std::string table = ChosenTable(choices);
    switch (choices.Below(6)) {
    case 0:
        return Compare([definition = ChosenDefinition(choices)](auto& side) { return side.Create(definition); });
    case 1:
        return Compare([&](auto& side) { return side.Exists(table); });
    case 2:
        return Compare([&](auto& side) { return side.Drop(table); });
    case 3:
        return Compare([&, newName = ChosenTable(choices)](auto& side) { return side.Alter(table, newName); });
    case 4:
        return Compare([&, condition = ChosenCondition(choices)](auto& side) { return side.Count(table, condition); });
    default:
        return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Prepare(sql); });
    }
}

std::string FacadeOperations::Write(FuzzInput& choices)
{
    static const std::vector<NumberLocale> Locales = NumberLocales();
    static const std::vector<int> Roundings(std::begin(UnusualRoundings), std::end(UnusualRoundings));
    const std::string table = ChosenTable(choices);
    const DbTableDataWrite data = ChosenData(choices);
    const std::size_t operation = choices.Below(3);
    const std::string sql = operation == 0 ? ChosenCommand(choices) : ChosenCondition(choices);
    std::optional<ScopedGlobalLocale> locale;
    if (m_locale == GlobalLocale::Chosen && choices.OneIn(6)) {
        locale.emplace(choices.Of(Locales).locale);
    }
    const ScopedRounding rounding(choices.OneIn(12) ? choices.Of(Roundings) : FE_TONEAREST);
    return Compare([&](auto& side) {
        switch (operation) {
        case 0:
            return side.Execute(sql);
        case 1:
            return side.Write(table, data);
        default:
            return side.Update(table, data, sql);
        }
    });
}

std::string FacadeOperations::Read(FuzzInput& choices)
{
    if (choices.OneIn(2)) {
        return Compare([table = ChosenTable(choices)](auto& side) { return side.ReadTable(table); });
    }
    return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Read(sql); });
}

std::string FacadeOperations::Walk(FuzzInput& choices)
{
    switch (choices.Below(5)) {
    case 0:
        return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Begin(sql); });
    case 1:
        return Compare([](auto& side) { return side.ReadNext(); });
    case 2:
        return Compare([](auto& side) { return side.FirstRow(); });
    case 3:
        return Compare([](auto& side) { return side.AdvanceIterator(); });
    default:
        return Compare([](auto& side) { return side.CloseTable(); });
    }
}

std::string FacadeOperations::CompareFiles()
{
    m_library.reset();
    m_reference.reset();
    for (const char* const name : {"main.db", "new/directory/main.db"}) {
        const auto pathIn = [&](const std::string& directory) {
            return std::filesystem::exists(directory + name) ? directory + name : ":memory:";
        };
        RawSqlite actual(pathIn(m_libraryDirectory));
        RawSqlite expected(pathIn(m_referenceDirectory));
        const std::string schema = "SELECT type, name, sql FROM sqlite_master ORDER BY rowid";
        if (actual.Value("PRAGMA integrity_check") != "'ok'") {
            return std::string(name) + " is damaged";
        }
        if (actual.Rows(schema) != expected.Rows(schema)) {
            return std::string(name) + " holds another schema";
        }
        for (const auto& table : expected.Rows("SELECT name FROM sqlite_master WHERE type = 'table'")) {
            const std::string rows = "SELECT * FROM \"" + table.front().substr(1, table.front().size() - 2) + '"';
            if (actual.Rows(rows) != expected.Rows(rows)) {
                return std::string(name) + " holds other rows: " + rows;
            }
        }
    }
    return {};
}

} // namespace Morvik::sql::tests
