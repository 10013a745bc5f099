#include <sql/DatabaseApi.h>

#include <iostream>

using namespace Morvik::sql;
using enum DbTableColumnType;

int main()
{
    DatabaseApi database;
    const DbTableDefinition room{
        .name = "room",
        .columns = {{.name = "name", .type = Text}, {.name = "degrees", .type = Real}},
    };
    const DbTableRowValues kitchen{
        .cells = {{.type = Text, .value = "kitchen"}, {.type = Real, .value = 21.5}},
    };
    const DbTableDataWrite rows{.columns = {"name", "degrees"}, .rows = {kitchen}};
    if (database.OpenDatabase("first-steps/home.db", false) && // false: read and write
        database.CreateTable(room) &&                          // if it does not exist
        database.WriteTableValues("room", rows) &&             // all rows or none
        database.SqlQueryBegin("SELECT name, degrees FROM room")) {
        for (const DbTableRowValues& row : database) {
            std::cout << std::get<std::string>(row.cells[0].value) << ' ';
            std::cout << std::get<double>(row.cells[1].value) << '\n';
        }
    }
    if (database.Failed()) {
        std::cerr << database.GetLastErrorMsg() << '\n';
    }
    return database.GetLastError();
}
