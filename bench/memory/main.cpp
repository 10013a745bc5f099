#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "contenders/Contenders.h"
#include "memory/CountedMemory.h"
#include "support/Databases.h"

namespace Morvik::sql::bench {

namespace {

// The cells of a row: integers, and texts of `textSize` characters.
struct Shape {
    int integers;
    int texts;
    std::size_t textSize;
};

struct Statement {
    std::string shape;
    DbTableDataWrite data;
    std::string columns;
    std::size_t cells = 0;
    std::size_t text = 0;
    std::size_t quoted = 0;
};

// The size of the statement that WriteTableValues makes for `rows` rows: `text` bytes, of which `quoted` bytes are
// texts with their quotation marks.
Statement StatementOf(const Shape& shape, int rows)
{
    Statement statement;
    statement.shape = std::to_string(shape.integers) + " integers, " + std::to_string(shape.texts) + " texts of " +
                      std::to_string(shape.textSize) + " bytes";
    for (int i = 0; i < shape.integers + shape.texts; ++i) {
        statement.data.columns.push_back("c" + std::to_string(i));
        statement.columns += (i == 0 ? "" : ",") + statement.data.columns.back();
    }
    statement.text = std::string("INSERT INTO sample () VALUES").size() + statement.columns.size();
    for (int row = 0; row < rows; ++row) {
        DbTableRowValues values;
        for (int i = 0; i < shape.integers; ++i) {
            DbTableColumnValue& cell = values.cells.emplace_back();
            cell.type = DbTableColumnType::Integer;
            cell.value = 10'000 + row % 10'000;
            statement.text += std::string("10000,").size();
        }
        for (int i = 0; i < shape.texts; ++i) {
            DbTableColumnValue& cell = values.cells.emplace_back();
            cell.type = DbTableColumnType::Text;
            cell.value = std::string(shape.textSize, 'x');
            statement.text += shape.textSize + std::string("\"\",").size();
            statement.quoted += shape.textSize + 2;
        }
        statement.text += std::string(" ,(").size();
        statement.cells += values.cells.size();
        statement.data.rows.push_back(std::move(values));
    }
    return statement;
}

// The statement that WriteTableValues makes of the rows that every job writes.
Statement SampleStatement(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    Statement statement;
    statement.shape = "sample";
    statement.data = WriteRequest(rows);
    statement.columns = "number,measure,label,bytes";
    statement.cells = 4 * rows.size();
    statement.text = InsertText(rows).size();
    for (const SampleRow& row : rows) {
        statement.quoted += row.label.size() + row.bytes.size() + 4;
    }
    return statement;
}

// Limits SQLite's cache to a few pages. Otherwise the memory for pages would hide the memory for the statement.
void WriteStatement(std::FILE* output, const Statement& statement, const char* separator)
{
    DatabaseApi database;
    Require(database.OpenDatabase(NewFile(), false) && database.Execute("PRAGMA cache_size=10; PRAGMA synchronous=0") &&
                database.Execute("CREATE TABLE sample (" + statement.columns + ")"),
            "open", database.GetLastErrorMsg().c_str());
    const auto write = [&] {
        Require(database.WriteTableValues("sample", statement.data), "write", database.GetLastErrorMsg().c_str());
    };
    write();
    const CountedMemory memory;
    write();
    std::fprintf(output,
                 "%s\n{\"shape\": \"%s\", \"rows\": %zu, \"cells\": %zu, \"text\": %zu, \"quoted\": %zu, "
                 "\"peak\": %zu}",
                 separator, statement.shape.c_str(), statement.data.rows.size(), statement.cells, statement.text,
                 statement.quoted, memory.Peak());
}

// The input of the contender counts only if it is text, because a caller has to build that text.
template <typename Contender>
std::size_t SizeOfText(const typename Contender::Write& write)
{
    if constexpr (std::is_same_v<typename Contender::Write, std::string>) {
        return write.size();
    } else {
        return 0;
    }
}

template <typename Contender>
std::size_t PeakOfWriting(int count)
{
    const std::vector<SampleRow> rows = SampleRows(count);
    const typename Contender::Write write = Contender::MakeWrite(rows);
    Fresh<Contender> database(false);
    database.Make();
    const CountedMemory memory;
    database.Get().Insert(write);
    const std::size_t peak = memory.Peak() + SizeOfText<Contender>(write);
    database.RequireWritten(rows);
    return peak;
}

} // namespace

} // namespace Morvik::sql::bench

int main(int argc, char** argv)
{
    namespace bench = Morvik::sql::bench;

    std::FILE* const output = argc >= 2 ? std::fopen(argv[1], "w") : nullptr;
    if (output == nullptr) {
        std::fprintf(stderr, "usage: %s OUTPUT.json [LARGEST]\nMeasures statements of at most LARGEST rows.\n",
                     argv[0]);
        return EXIT_FAILURE;
    }
    const int largest = argc >= 3 ? std::atoi(argv[2]) : std::numeric_limits<int>::max();
    bench::CountedMemory::CountSqlite();
    const char* separator = "{\"peaks\": {";
    bench::ForEachContender([&]<typename Contender> {
        if constexpr (bench::Writer<Contender> && requires { typename Contender::Write; }) {
            const int count = std::min(largest, 100'000);
            std::fprintf(output, "%s\n\"%s\": %zu", separator, Contender::Name, bench::PeakOfWriting<Contender>(count));
            separator = ",";
        }
    });
    separator = "},\n\"statements\": [";
    const bench::Shape shapes[] = {{1, 0, 0},  {4, 0, 0},  {8, 0, 0},   {1, 1, 20},  {0, 4, 10},
                                   {3, 3, 50}, {6, 10, 8}, {1, 1, 200}, {1, 1, 2000}};
    for (const int rows : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1'000, 2'000, 5'000, 10'000}) {
        if (rows > largest) {
            break;
        }
        for (const bench::Shape& shape : shapes) {
            bench::WriteStatement(output, bench::StatementOf(shape, rows), separator);
            separator = ",";
        }
        bench::WriteStatement(output, bench::SampleStatement(rows), separator);
    }
    std::fprintf(output, "]}\n");
    return std::fclose(output) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
