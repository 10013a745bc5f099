#include <sql/DatabaseApi.h>

#include <iostream>

using namespace Morvik::sql;

int main()
{
    DatabaseApi database;
    const DbTableDefinition room{"room", {{"name", DbTableColumnType::Text}, {"degrees", DbTableColumnType::Real}}};
    const DbTableRowValues kitchen{{{DbTableColumnType::Text, 0, "kitchen"}, {DbTableColumnType::Real, 0, 21.5}}};
    if (database.OpenDatabase("first-steps/home.db", false) && database.CreateTable(room) &&
        database.WriteTableValues("room", {{"name", "degrees"}, {kitchen}}) &&
        database.SqlQueryBegin("SELECT name, degrees FROM room")) {
        for (const DbTableRowValues& row : database) {
            std::cout << std::get<std::string>(row.cells[0].value) << ' ' << std::get<double>(row.cells[1].value)
                      << '\n';
        }
    }
    if (database.Failed()) {
        std::cerr << database.GetLastErrorMsg() << '\n';
    }
    return database.GetLastError();
}
