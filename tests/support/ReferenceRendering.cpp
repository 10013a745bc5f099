#include "support/ReferenceRendering.h"

#include <map>
#include <sstream>
#include <utility>
#include <vector>

#include "support/Quoting.h"

namespace Morvik::sql::tests {

namespace {

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

// A default stream writes the numbers. A cell whose value is not the tag's alternative has no text.
std::string ReferenceLiteral(const DbTableColumnValue& cell)
{
    std::ostringstream stream;
    try {
        switch (static_cast<int>(cell.type)) {
        case 0:
        case 1:
            stream << std::get<int>(cell.value);
            break;
        case 2:
            stream << std::get<double>(cell.value);
            break;
        case 3:
            return Quoted(Doubled(std::get<std::string>(cell.value), '\''), '"');
        case 4: {
            const auto& bytes = std::get<std::vector<char>>(cell.value);
            return '"' + std::string(bytes.begin(), bytes.end()) + '"';
        }
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
    } catch (const std::bad_variant_access&) {
        return {};
    }
    return stream.str();
}

std::string ReferenceColumnConstraints(const DbTableColumnDefinition& column)
{
    static const std::vector<std::pair<DbTableColumnConstraint, std::string>> Keywords{
        {PrimaryKey, "PRIMARY KEY"}, {NotNull, "NOT NULL"}, {Unique, "UNIQUE"}, {Check, "CHECK"}, {Default, "DEFAULT"}};
    std::string text;
    for (const auto& [constraint, keyword] : Keywords) {
        if ((column.constraintFlags & constraint) != 0) {
            const auto argument = column.constraintArguments.find(constraint);
            text += (text.empty() ? "" : " ") + keyword;
            if (argument != column.constraintArguments.end() && !argument->second.empty()) {
                text += ' ' + argument->second;
            }
        }
    }
    return text;
}

std::string ReferenceColumn(const DbTableColumnDefinition& column)
{
    static const std::map<int, std::string> TypeNames{{1, "INTEGER"}, {2, "REAL"}, {3, "TEXT"},    {4, "BLOB"},
                                                      {6, "TEXT"},    {7, "TEXT"}, {8, "INTEGER"}, {9, "REAL"}};
    const auto type = TypeNames.find(static_cast<int>(column.type));
    return column.name + ' ' + (type != TypeNames.end() ? type->second : "") + ' ' + ReferenceColumnConstraints(column);
}

std::string ReferenceForeignKey(const DbTableConstraints& constraints)
{
    const std::string names = Joined(constraints.foreignKey);
    std::string text;
    if (!constraints.foreignKey.empty()) {
        text = "FOREIGN KEY (" + names + ")";
        if (!constraints.referenceTable.empty()) {
            text += " REFERENCES " + constraints.referenceTable + "(" + names + ") ON DELETE SET NULL";
        }
    }
    return text + " )";
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
    for (const DbTableColumnDefinition& column : definition.columns) {
        columns.push_back(ReferenceColumn(column));
    }
    const std::string constraints = ReferenceTableConstraints(definition.constraints);
    return "CREATE TABLE IF NOT EXISTS " + definition.name + " (" + Joined(columns) + (constraints.empty() ? "" : ",") +
           constraints + ")";
}

} // namespace Morvik::sql::tests
