#pragma once

#include <sql/DbTableDataWrite.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Morvik::sql::bench {

/// The row that every job writes or reads: an int, a double, a text of 20 characters and a blob of 16 bytes.
struct SampleRow {
    int number = 0;
    double measure = 0.0;
    std::string label;
    std::vector<char> bytes;

    bool operator==(const SampleRow&) const = default;
};

inline constexpr const char* CreateTable =
    "CREATE TABLE sample (number INTEGER PRIMARY KEY, measure REAL, label TEXT, bytes BLOB)";
inline constexpr const char* SelectAll = "SELECT * FROM sample";
inline constexpr const char* InsertRow = "INSERT INTO sample VALUES (?,?,?,?)";
inline constexpr const char* UpdateRow = "UPDATE sample SET measure=?, label=?, bytes=? WHERE number=?";
inline constexpr const char* SelectRow = "SELECT * FROM sample WHERE number=?";

/// Rows numbered from 0, the same at every call. The doubles have six digits, and the bytes hold neither a zero nor a
/// double quotation mark, so that SQL text holds every value exactly.
std::vector<SampleRow> SampleRows(int count);

/// Rows with the same numbers as SampleRows() and other values.
std::vector<SampleRow> ChangedRows(int count);

/// The rows split into parts of `size` rows each; the last part may be smaller.
std::vector<std::vector<SampleRow>> Batches(const std::vector<SampleRow>& rows, int size);

/// The rows in the type that the facade writes.
DbTableDataWrite WriteRequest(const std::vector<SampleRow>& rows);

/// The statement that the facade makes for WriteRequest(rows), written here with a stream.
std::string InsertText(const std::vector<SampleRow>& rows);

/// The statement that the facade makes to update all columns except the number, and the condition in it.
std::string UpdateText(const SampleRow& row);
std::string UpdateCondition(const SampleRow& row);

/// A checksum of the rows that a reader gets. Of a text or blob, only the size and the middle byte count.
struct Totals {
    long long rows = 0;
    long long numbers = 0;
    double measures = 0.0;
    std::size_t labels = 0;
    std::size_t bytes = 0;

    bool operator==(const Totals&) const = default;

    void Add(const SampleRow& row)
    {
        Add(row.number, row.measure, row.label.data(), row.label.size(), row.bytes.data(), row.bytes.size());
    }

    void Add(int number, double measure, const char* label, std::size_t labelSize, const char* blob,
             std::size_t blobSize)
    {
        ++rows;
        numbers += number;
        measures += measure;
        labels += labelSize + static_cast<unsigned char>(label[labelSize / 2]);
        bytes += blobSize + static_cast<unsigned char>(blob[blobSize / 2]);
    }
};

/// Adds the rows to `totals`.
Totals Sum(const std::vector<SampleRow>& rows, Totals totals = {});

/// Calls `find(query, rows)` for every query, and adds up the rows that it finds.
template <typename Contender, typename Find>
Totals SumOfFound(const std::vector<typename Contender::Query>& queries, Find find)
{
    Totals totals;
    for (const typename Contender::Query& query : queries) {
        typename Contender::Rows rows;
        find(query, rows);
        totals = Contender::SumOf(rows, totals);
    }
    return totals;
}

} // namespace Morvik::sql::bench
