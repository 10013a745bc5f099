#include "files/SampleDatabase.h"

#include <sql/DatabaseApi.h>

#include <stdexcept>
#include <vector>

#include "support/Cells.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

constexpr int Readings = 60;
constexpr int Notes = 6;

void Require(const DatabaseApi& database, bool succeeded)
{
    if (!succeeded) {
        throw std::runtime_error("no sample database: " + database.GetLastErrorMsg());
    }
}

DbTableDefinition Table(const std::string& name)
{
    return {name,
            {{"number", DbTableColumnType::Integer, 0, PrimaryKey},
             {"label", DbTableColumnType::Text, 0, NotNull},
             {"value", DbTableColumnType::Real},
             {"bytes", DbTableColumnType::Blob}},
            {}};
}

DbTableDataWrite Rows(int count, std::size_t labelSize)
{
    DbTableDataWrite data{{"number", "label", "value"}, {}};
    for (int i = 1; i <= count; ++i) {
        std::string label = "label " + std::to_string(i * 7919 % 1000);
        label.resize(labelSize + static_cast<std::size_t>(i), static_cast<char>('a' + i % 26));
        data.rows.push_back({{IntegerCell(i), TextCell(label), RealCell(i / 8.0)}});
    }
    return data;
}

void StoreBytes(const DatabaseApi& database, const std::string& table, int number, std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 37);
    }
    SqlCommand command = database.PrepareStatement("UPDATE " + table + " SET bytes=? WHERE number=?");
    Require(database, command.BindBlob(1, bytes) && command.BindInteger(2, number) && command.Step());
}

} // namespace

std::string SampleDatabase(int pageSize)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("sample.db");
    DatabaseApi database;
    Require(database, database.OpenDatabase(path, false));
    Require(database, database.Execute("PRAGMA synchronous = OFF; PRAGMA page_size = " + std::to_string(pageSize)));
    const auto page = static_cast<std::size_t>(pageSize);
    Require(database, database.CreateTable(Table("reading")) && database.CreateTable(Table("note")) &&
                          database.CreateTable(Table("scrap")));
    Require(database, database.Execute("CREATE INDEX by_label ON reading (label)"));
    Require(database, database.WriteTableValues("scrap", Rows(Notes, 2 * page)));
    Require(database, database.WriteTableValues("reading", Rows(Readings, page / 32)));
    Require(database, database.WriteTableValues("note", Rows(Notes, page)));
    StoreBytes(database, "reading", 3, page / 8);
    StoreBytes(database, "note", 2, page * 2);
    Require(database, database.DropTable("scrap") && database.CloseDatabase());
    return FileContent(path);
}

} // namespace Morvik::sql::tests
