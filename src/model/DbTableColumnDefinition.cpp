#include <sql/DbTableColumnDefinition.h>

#include <array>
#include <string_view>

#include "model/Strings.h"

namespace Morvik::sql {

namespace {

struct ConstraintKeyword {
    DbTableColumnConstraint constraint;
    std::string_view keyword;
};

// The constraints in the order in which the clause lists them, which differs from the order of their values.
constexpr auto ConstraintKeywords = std::to_array<ConstraintKeyword>({
    {PrimaryKey, "PRIMARY KEY"},
    {NotNull, "NOT NULL"},
    {Unique, "UNIQUE"},
    {Check, "CHECK"},
    {Default, "DEFAULT"},
});

std::string_view DeclaredType(DbTableColumnType type)
{
    switch (type) {
    case DbTableColumnType::Integer:
    case DbTableColumnType::UnixTimeNow:
        return "INTEGER";
    case DbTableColumnType::Real:
    case DbTableColumnType::JulianDayNow:
        return "REAL";
    case DbTableColumnType::Text:
    case DbTableColumnType::DateTimeNow:
    case DbTableColumnType::DateTimeNowLocalTime:
        return "TEXT";
    case DbTableColumnType::Blob:
        return "BLOB";
    case DbTableColumnType::None:
    case DbTableColumnType::Null:
        break;
    }
    return {};
}

} // namespace

std::string DbTableColumnDefinition::ColumnConstraintsAsString() const
{
    std::string clause;
    for (const auto& [constraint, keyword] : ConstraintKeywords) {
        if ((constraintFlags & constraint) == 0) {
            continue;
        }
        if (!clause.empty()) {
            clause += ' ';
        }
        clause += keyword;
        const auto argument = constraintArguments.find(constraint);
        if (argument != constraintArguments.end() && !argument->second.empty()) {
            clause += ' ';
            clause += argument->second;
        }
    }
    return clause;
}

std::string DbTableColumnDefinition::ColumnDefinitionAsString() const
{
    return StrCat({name, " ", DeclaredType(type), " ", ColumnConstraintsAsString()});
}

} // namespace Morvik::sql
