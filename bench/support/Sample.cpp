#include "support/Sample.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <sstream>
#include <string_view>

namespace Morvik::sql::bench {

namespace {

constexpr int LabelSize = 20;
constexpr int BlobSize = 16;

int Below(std::mt19937& random, int limit)
{
    return static_cast<int>(random() % static_cast<std::uint32_t>(limit));
}

std::vector<SampleRow> RandomRows(int count, std::uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<SampleRow> rows(static_cast<std::size_t>(count));
    int number = 0;
    for (SampleRow& row : rows) {
        row.number = number++;
        row.measure = Below(random, 1'000'000) / 1000.0;
        for (int i = 0; i < LabelSize; ++i) {
            row.label += static_cast<char>('a' + Below(random, 26));
        }
        for (int i = 0; i < BlobSize; ++i) {
            row.bytes.push_back(static_cast<char>('#' + Below(random, 220)));
        }
    }
    return rows;
}

void StreamValues(std::ostream& stream, const SampleRow& row)
{
    stream << row.measure << ",\"" << row.label << "\",\"" << std::string_view(row.bytes.data(), row.bytes.size())
           << '"';
}

} // namespace

std::vector<SampleRow> SampleRows(int count)
{
    return RandomRows(count, 1);
}

std::vector<SampleRow> ChangedRows(int count)
{
    return RandomRows(count, 2);
}

std::vector<std::vector<SampleRow>> Batches(const std::vector<SampleRow>& rows, int size)
{
    std::vector<std::vector<SampleRow>> batches;
    for (auto begin = rows.begin(); begin != rows.end();) {
        const auto end = begin + std::min<std::ptrdiff_t>(size, rows.end() - begin);
        batches.emplace_back(begin, end);
        begin = end;
    }
    return batches;
}

DbTableDataWrite WriteRequest(const std::vector<SampleRow>& rows)
{
    DbTableDataWrite request;
    request.columns = {"number", "measure", "label", "bytes"};
    for (const SampleRow& row : rows) {
        request.rows.push_back({{{DbTableColumnType::Integer, 0, row.number},
                                 {DbTableColumnType::Real, 1, row.measure},
                                 {DbTableColumnType::Text, 2, row.label},
                                 {DbTableColumnType::Blob, 3, row.bytes}}});
    }
    return request;
}

std::string InsertText(const std::vector<SampleRow>& rows)
{
    std::ostringstream stream;
    stream << "INSERT INTO sample (number,measure,label,bytes) VALUES";
    const char* opening = " (";
    for (const SampleRow& row : rows) {
        stream << opening << row.number << ',';
        StreamValues(stream, row);
        stream << ')';
        opening = " ,(";
    }
    return stream.str();
}

std::string UpdateText(const SampleRow& row)
{
    std::ostringstream stream;
    stream << "UPDATE sample SET (measure,label,bytes)=(";
    StreamValues(stream, row);
    stream << ") " << UpdateCondition(row);
    return stream.str();
}

std::string UpdateCondition(const SampleRow& row)
{
    return "WHERE number=" + std::to_string(row.number);
}

Totals Sum(const std::vector<SampleRow>& rows, Totals totals)
{
    for (const SampleRow& row : rows) {
        totals.Add(row);
    }
    return totals;
}

} // namespace Morvik::sql::bench
