#include "support/ReferenceRendering.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

namespace Morvik::sql::tests {

namespace {

std::string WithDoubled(const std::string& text, char quote)
{
    std::string doubled;
    for (const char c : text) {
        doubled += c;
        if (c == quote) {
            doubled += c;
        }
    }
    return doubled;
}

std::string TypeName(DbTableColumnType type)
{
    static const std::map<int, std::string> Names{{1, "INTEGER"}, {2, "REAL"}, {3, "TEXT"},    {4, "BLOB"},
                                                  {6, "TEXT"},    {7, "TEXT"}, {8, "INTEGER"}, {9, "REAL"}};
    const auto name = Names.find(static_cast<int>(type));
    return name != Names.end() ? name->second : "";
}

template <typename Items>
std::string Joined(const Items& items)
{
    std::ostringstream stream;
    const char* comma = "";
    for (const auto& item : items) {
        stream << comma << item;
        comma = ",";
    }
    return stream.str();
}

} // namespace

std::string ReferenceLiteral(const DbTableColumnValue& cell)
{
    std::ostringstream stream;
    switch (static_cast<int>(cell.type)) {
    case 0:
    case 1:
        if (std::holds_alternative<int>(cell.value)) {
            stream << std::get<int>(cell.value);
        }
        break;
    case 2:
        if (std::holds_alternative<double>(cell.value)) {
            stream << std::get<double>(cell.value);
        }
        break;
    case 3:
        if (std::holds_alternative<std::string>(cell.value)) {
            stream << '"' << WithDoubled(WithDoubled(std::get<std::string>(cell.value), '\''), '"') << '"';
        }
        break;
    case 4:
        if (std::holds_alternative<std::vector<char>>(cell.value)) {
            const auto& bytes = std::get<std::vector<char>>(cell.value);
            stream << '"' << std::string(bytes.begin(), bytes.end()) << '"';
        }
        break;
    case 6:
        return "datetime('now')";
    case 7:
        return "datetime('now','localtime')";
    case 8:
        return "strftime('%s', 'now')";
    case 9:
        return "julianday('now')";
    default:
        break;
    }
    return stream.str();
}

std::string ReferenceColumnConstraints(const DbTableColumnDefinition& column)
{
    static const std::vector<std::pair<DbTableColumnConstraint, std::string>> Keywords{
        {PrimaryKey, "PRIMARY KEY"}, {NotNull, "NOT NULL"}, {Unique, "UNIQUE"}, {Check, "CHECK"}, {Default, "DEFAULT"}};
    std::ostringstream stream;
    const char* blank = "";
    for (const auto& [constraint, keyword] : Keywords) {
        if ((column.constraintFlags & constraint) != 0) {
            stream << blank << keyword;
            blank = " ";
            if (column.constraintArguments.contains(constraint) && !column.constraintArguments.at(constraint).empty()) {
                stream << ' ' << column.constraintArguments.at(constraint);
            }
        }
    }
    return stream.str();
}

std::string ReferenceColumn(const DbTableColumnDefinition& column)
{
    std::ostringstream stream;
    stream << column.name << ' ' << TypeName(column.type) << ' ' << ReferenceColumnConstraints(column);
    return stream.str();
}

std::string ReferenceForeignKey(const DbTableConstraints& constraints)
{
    std::ostringstream stream;
    const std::string names = Joined(constraints.foreignKey);
    if (!constraints.foreignKey.empty()) {
        stream << "FOREIGN KEY (" << names << ')';
        if (!constraints.referenceTable.empty()) {
            stream << " REFERENCES " << constraints.referenceTable << '(' << names << ") ON DELETE SET NULL";
        }
    }
    stream << " )";
    return stream.str();
}

std::string ReferenceTableConstraints(const DbTableConstraints& constraints)
{
    std::vector<std::string> items;
    if (!constraints.primaryKey.empty()) {
        items.push_back("PRIMARY KEY (" + Joined(constraints.primaryKey) + ") ON CONFLICT IGNORE");
    }
    if (!constraints.unique.empty()) {
        items.push_back("UNIQUE (" + Joined(constraints.unique) + ") ON CONFLICT IGNORE");
    }
    const bool keyOrReference = !items.empty() || !constraints.referenceTable.empty();
    if (keyOrReference && !constraints.foreignKey.empty()) {
        items.push_back(ReferenceForeignKey(constraints));
    }
    return Joined(items);
}

std::string ReferenceCreateStatement(const DbTableDefinition& definition)
{
    std::vector<std::string> columns;
    std::transform(definition.columns.begin(), definition.columns.end(), std::back_inserter(columns), ReferenceColumn);
    const std::string constraints = ReferenceTableConstraints(definition.constraints);
    std::ostringstream stream;
    stream << "CREATE TABLE IF NOT EXISTS " << definition.name << " (" << Joined(columns)
           << (constraints.empty() ? "" : ",") << constraints << ')';
    return stream.str();
}

} // namespace Morvik::sql::tests
