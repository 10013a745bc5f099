#include "fuzz/StoredValue.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <variant>
#include <vector>

#include "fuzz/Finding.h"

namespace Morvik::sql::tests {

namespace {

void RequireSameNumber(const std::string& stored, const std::string& literal)
{
    const double actual = std::strtod(stored.c_str(), nullptr);
    const double expected = std::strtod(literal.c_str(), nullptr);
    // SQLite prints 15 digits, and parses the smallest numbers with fewer.
    const bool same = std::abs(actual - expected) <= std::max(std::abs(expected) * 1e-14, 1e-290);
    if (!same || stored.front() == '\'') {
        ReportFinding("The number " + literal + " is stored as " + stored);
    }
}

} // namespace

std::string Doubled(const std::string& text)
{
    std::string doubled;
    for (const char c : text) {
        doubled.append(c == '\'' ? 2 : 1, c);
    }
    return doubled;
}

std::string Quoted(const std::string& text)
{
    return "'" + Doubled(text) + "'";
}

void RequireStoredAs(const DbTableColumnValue& cell, const std::string& literal, const std::string& stored)
{
    if (literal.front() != '"') {
        const bool isTime = cell.type > DbTableColumnType::Null;
        const bool isText = cell.type != DbTableColumnType::JulianDayNow;
        isTime ? RequireSame("The time's first character", stored.substr(0, 1), isText ? "'" : "2")
               : RequireSameNumber(stored, literal);
    } else if (const auto* const text = std::get_if<std::string>(&cell.value)) {
        RequireSame("The stored text of " + Printable(*text), stored, Quoted(Doubled(*text)));
    } else {
        const auto& bytes = std::get<std::vector<char>>(cell.value);
        RequireSame("The stored bytes", stored, Quoted(std::string(bytes.begin(), bytes.end())));
    }
}

} // namespace Morvik::sql::tests
