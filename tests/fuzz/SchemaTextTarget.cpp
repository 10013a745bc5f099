// For any table definition, the library's text must equal that of the reference rendering, and creating the table must
// have the same result as running that text in raw SQLite.

#include <sql/DatabaseApi.h>

#include <span>
#include <string>
#include <variant>
#include <vector>

#include "fuzz/BoundedConnections.h"
#include "fuzz/Finding.h"
#include "fuzz/FuzzTarget.h"
#include "fuzz/StoredValue.h"
#include "support/AnyDefinition.h"
#include "support/PlainRendering.h"
#include "support/RawSqlite.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

const std::string SchemaQuery =
    "SELECT coalesce(group_concat(type || name || tbl_name || quote(sql)), '') FROM sqlite_master";

void RequirePlainTexts(const DbTableDefinition& definition)
{
    RequireSame("The table's constraints", definition.TableConstraintAsString(),
                PlainTableConstraints(definition.constraints));
    RequireSame("The foreign key", definition.constraints.ForeignKeyConstraintAsString(),
                PlainForeignKey(definition.constraints));
    for (const DbTableColumnDefinition& column : definition.columns) {
        RequireSame("The column's constraints", column.ColumnConstraintsAsString(), PlainColumnConstraints(column));
        RequireSame("The column", column.ColumnDefinitionAsString(), PlainColumn(column));
    }
}

void RequirePlainTable(const DbTableDefinition& definition)
{
    BoundedConnections connections;
    DatabaseApi facade;
    facade.OpenDatabase(":memory:", false);
    RawSqlite plain(":memory:");
    const std::string sql = PlainCreateStatement(definition);

    connections.BeginOperation();
    std::vector<std::string> executed;
    {
        const SqliteCallRecorder recorded;
        facade.CreateTable(definition);
        executed = recorded.Executed();
    }
    RequireSame("The number of statements", std::to_string(executed.size()), "1");
    RequireSame("The statement", executed.front(), sql);

    const RawFailure failure = FailureOfExec(plain.Handle(), sql);
    RequireSame("The code", std::to_string(facade.GetLastError()), std::to_string(failure.code));
    RequireSame("The message", facade.GetLastErrorMsg(), failure.message);

    connections.BeginOperation();
    DbTableData schema;
    if (!facade.ReadValues(SchemaQuery, schema)) {
        ReportFinding("The schema cannot be read: " + facade.GetLastErrorMsg());
    }
    const auto& actual = std::get<std::string>(schema.rows.at(0).cells.at(0).value);
    RequireSame("The schema", Quoted(actual), plain.Value(SchemaQuery));
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Morvik::sql::tests;
    FuzzInput choices(std::span(data, size));
    const Morvik::sql::DbTableDefinition definition = AnyDefinition(choices);
    RequirePlainTexts(definition);
    RequirePlainTable(definition);
    return 0;
}
