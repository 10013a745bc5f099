#include "package_inventory/Inventory.h"

#include "common/Cells.h"

namespace examples {

using Morvik::sql::Check;
using Morvik::sql::DbTableColumnType;
using Morvik::sql::DbTableDataWrite;
using Morvik::sql::DbTableDefinition;
using Morvik::sql::Default;
using Morvik::sql::NotNull;
using Morvik::sql::PrimaryKey;

namespace {

constexpr int ApplicationId = 0x706B6769; // "pkgi"

} // namespace

Inventory::Inventory(const std::string& path) : m_database(path, ApplicationId) {}

std::optional<Changes> Inventory::Replace(const std::vector<Package>& packages, int marked)
{
    Transaction transaction(m_database);
    const bool isMigration = m_database.HasTable("package");
    if (isMigration) {
        m_database.Require(m_database.Api().AlterTable("package", "earlier_package"), "rename the earlier table in");
    }

    CreateTable();
    Write(packages);
    MarkLargest(marked);

    std::optional<Changes> changes;
    if (isMigration) {
        KeepEarlierTimes();
        changes = CompareWithEarlier();
        m_database.Require(m_database.Api().DropTable("earlier_package"), "drop the earlier table from");
    }
    transaction.Commit();
    return changes;
}

void Inventory::CreateTable()
{
    DbTableDefinition definition;
    definition.name = "package";
    definition.columns = {
        {"id", DbTableColumnType::Integer, 0, PrimaryKey},
        {"name", DbTableColumnType::Text, 0, NotNull},
        {"architecture", DbTableColumnType::Text, 0, NotNull},
        {"version", DbTableColumnType::Text, 0, NotNull},
        {"section", DbTableColumnType::Text, 0, NotNull},
        {"state", DbTableColumnType::Text, 0, NotNull},
        {"installed_size", DbTableColumnType::Integer, 0, NotNull | Check, {{Check, "(installed_size >= 0)"}}},
        {"description", DbTableColumnType::Text, 0, NotNull},
        {"recorded", DbTableColumnType::UnixTimeNow, 0, NotNull},
        {"mark", DbTableColumnType::Text, 0, NotNull | Default, {{Default, "''"}}},
    };
    m_database.Require(m_database.Api().CreateTable(definition), "create the table in");
}

void Inventory::Write(const std::vector<Package>& packages)
{
    DbTableDataWrite data;
    data.columns = {"name", "architecture", "version", "section", "state", "installed_size", "description", "recorded"};
    for (const Package& package : packages) {
        data.rows.push_back({{TextCell(package.name), TextCell(package.architecture), TextCell(package.version),
                              TextCell(package.section), TextCell(package.state),
                              WideIntegerCell(package.installedSize), TextCell(package.description), UnixTimeCell()}});
    }
    m_database.Require(m_database.Api().WriteTableValues("package", data), "write the packages to");

    // The library stores every apostrophe of a text twice. Every one is doubled, so halving them all gives the texts as
    // they were; done here, before the transaction ends, nobody ever reads them doubled.
    m_database.Execute(R"(UPDATE package SET name = replace(name, '''''', ''''),
                                             architecture = replace(architecture, '''''', ''''),
                                             version = replace(version, '''''', ''''),
                                             section = replace(section, '''''', ''''),
                                             description = replace(description, '''''', ''''))",
                       "write the packages to");
}

void Inventory::MarkLargest(int count)
{
    DbTableDataWrite mark;
    mark.columns = {"mark"};
    mark.rows.push_back({{TextCell("largest")}});
    const std::string largest = "WHERE id IN (SELECT id FROM package "
                                "ORDER BY installed_size DESC, name, architecture LIMIT " +
                                std::to_string(count) + ")";
    m_database.Require(m_database.Api().UpdateTableValues("package", mark, largest), "mark the largest packages in");
}

void Inventory::KeepEarlierTimes()
{
    m_database.Execute(R"(UPDATE package SET recorded = earlier.recorded FROM earlier_package AS earlier
                          WHERE earlier.name = package.name AND earlier.architecture = package.architecture
                                AND earlier.version = package.version)",
                       "carry the earlier times over in");
}

Changes Inventory::CompareWithEarlier()
{
    Changes changes;
    changes.added = m_database.Count("package", R"(WHERE (name, architecture) NOT IN
                                                         (SELECT name, architecture FROM earlier_package))");
    changes.removed = m_database.Count("earlier_package", R"(WHERE (name, architecture) NOT IN
                                                                   (SELECT name, architecture FROM package))");
    changes.upgraded = m_database.Count("package", R"(WHERE (name, architecture) IN
                                                            (SELECT name, architecture FROM earlier_package)
                                                            AND (name, architecture, version) NOT IN
                                                            (SELECT name, architecture, version FROM earlier_package))");
    return changes;
}

} // namespace examples
