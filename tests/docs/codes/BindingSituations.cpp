#include <sql/SqlCommand.h>

#include <sqlite3.h>

#include <array>
#include <string>

#include "docs/codes/SituationConnection.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::array<unsigned char, 6> Bytes{'l', 'o', 'n', 'g', 'e', 'r'};

/// Binds with the operation of that name; texts and blobs have six bytes.
bool Bind(SqlCommand& command, const std::string& operation, int index)
{
    if (operation == "BindInteger") {
        return command.BindInteger(index, 1);
    }
    if (operation == "BindInt64") {
        return command.BindInt64(index, 1);
    }
    if (operation == "BindDouble") {
        return command.BindDouble(index, 1.5);
    }
    return operation == "BindText" ? command.BindText(index, "longer") : command.BindBlob(index, Bytes);
}

/// Binds a statement with one parameter whose record holds the message of an earlier failure.
Outcome Bound(const std::string& operation, int index,
              const std::function<void(SituationConnection&, SqlCommand&)>& arrange)
{
    SituationConnection connection;
    SqlCommand command(connection.database);
    command.Execute("nonsense");
    arrange(connection, command);
    return Observe(command, [&] { return Bind(command, operation, index); });
}

void Nothing(SituationConnection& /*connection*/, SqlCommand& /*command*/) {}

void Prepared(SituationConnection& /*connection*/, SqlCommand& command)
{
    command.Prepare("SELECT ?");
}

void Stepped(SituationConnection& connection, SqlCommand& command)
{
    Prepared(connection, command);
    command.Step();
}

void Limited(SituationConnection& connection, SqlCommand& command)
{
    Prepared(connection, command);
    sqlite3_limit(connection.database.GetNativeDatabaseInstance<sqlite3>(), SQLITE_LIMIT_LENGTH, 5);
}

} // namespace

Situations BindingSituations()
{
    Situations all;
    for (const std::string operation : {"BindInteger", "BindInt64", "BindDouble", "BindText", "BindBlob"}) {
        const std::string name = "SqlCommand::" + operation;
        all.push_back({name, "no statement is held", [=] { return Bound(operation, 1, Nothing); }});
        all.push_back({name, "the index is 0", [=] { return Bound(operation, 0, Prepared); }});
        all.push_back({name, "the index is too large", [=] { return Bound(operation, 2, Prepared); }});
        all.push_back({name, "the statement was stepped and not reset", [=] { return Bound(operation, 1, Stepped); }});
    }
    for (const std::string operation : {"BindText", "BindBlob"}) {
        all.push_back({"SqlCommand::" + operation, "the value is longer than SQLite's limit",
                       [=] { return Bound(operation, 1, Limited); }});
    }
    return all;
}

} // namespace Morvik::sql::tests
