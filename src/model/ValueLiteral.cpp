#include "model/ValueLiteral.h"

#include <exception>
#include <new>
#include <string_view>

#include <boost/algorithm/string/replace.hpp>

#include "model/NumberText.h"

namespace Morvik::sql {

namespace {

// Text and bytes stand between double quotation marks, not apostrophes: applications rely on what SQLite makes of it
// (O'Brien is stored as O''Brien, and an update reads a text that equals a column's name as that column).
void AppendQuoted(std::string& sql, std::string_view bytes)
{
    sql += '"';
    sql += bytes;
    sql += '"';
}

bool AppendText(std::string& sql, const std::string& text)
{
    if (text.find_first_of("'\"") == std::string::npos) {
        AppendQuoted(sql, text);
        return true;
    }
    std::string doubled;
    try {
        doubled = text;
        boost::algorithm::replace_all(doubled, "'", "''");
        boost::algorithm::replace_all(doubled, "\"", "\"\"");
    } catch (const std::exception&) {
        return false; // without the memory to double its quotes, the cell counts as one that cannot be written
    }
    AppendQuoted(sql, doubled);
    return true;
}

template <typename Alternative>
const Alternative* ValueOf(const DbTableColumnValue& cell)
{
    return std::get_if<Alternative>(&cell.value);
}

bool AppendLiteral(std::string& sql, const DbTableColumnValue& cell)
{
    switch (cell.type) {
    case DbTableColumnType::None:
    case DbTableColumnType::Integer:
        if (const auto* number = ValueOf<int>(cell)) {
            AppendNumber(sql, *number);
            return true;
        }
        return false;
    case DbTableColumnType::Real:
        if (const auto* number = ValueOf<double>(cell)) {
            AppendNumber(sql, *number);
            return true;
        }
        return false;
    case DbTableColumnType::Text:
        if (const auto* text = ValueOf<std::string>(cell)) {
            return AppendText(sql, *text);
        }
        return false;
    case DbTableColumnType::Blob:
        if (const auto* bytes = ValueOf<std::vector<char>>(cell)) {
            AppendQuoted(sql, {bytes->data(), bytes->size()});
            return true;
        }
        return false;
    case DbTableColumnType::DateTimeNow:
        sql += "datetime('now')";
        return true;
    case DbTableColumnType::DateTimeNowLocalTime:
        sql += "datetime('now','localtime')";
        return true;
    case DbTableColumnType::UnixTimeNow:
        sql += "strftime('%s', 'now')";
        return true;
    case DbTableColumnType::JulianDayNow:
        sql += "julianday('now')";
        return true;
    case DbTableColumnType::Null:
        break;
    }
    return false;
}

} // namespace

bool ColumnValueAsString(const DbTableColumnValue& cell, std::string& sql)
{
    try {
        return AppendLiteral(sql, cell);
    } catch (const std::bad_alloc&) {
        throw; // a statement that could not be built whole must not be run
    } catch (const std::exception&) {
        return false; // thrown by a facet of the application's locale
    }
}

} // namespace Morvik::sql
