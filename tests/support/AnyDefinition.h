#pragma once

#include <sql/DbTableDefinition.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

inline std::string AnyName(FuzzInput& choices)
{
    switch (choices.Below(8)) {
    case 0:
        return {};
    case 1: {
        std::string name = choices.Bytes(choices.Below(40));
        std::erase(name, '\0');
        return name;
    }
    case 2:
    case 3:
        return {"abcd"[choices.Below(4)]}; // a short name, with which SQLite may accept the definition
    default:
        return choices.TextOf("abcz_ '\",();\n\xC3\xA4", 12);
    }
}

inline DbTableColumnDefinition AnyColumn(FuzzInput& choices)
{
    DbTableColumnDefinition column;
    column.name = AnyName(choices);
    column.type = static_cast<DbTableColumnType>(choices.OneIn(20) ? static_cast<std::int32_t>(choices.Bits())
                                                                   : static_cast<std::int32_t>(choices.Below(14)) - 2);
    column.reserved = static_cast<std::int32_t>(choices.Bits());
    column.constraintFlags = choices.OneIn(4) ? choices.Bits() : choices.Bits() % 32;
    for (std::size_t left = choices.Below(7); left > 0; --left) {
        column.constraintArguments[static_cast<DbTableColumnConstraint>(1U << choices.Below(7))] = AnyName(choices);
    }
    return column;
}

inline std::vector<char> AnyKey(FuzzInput& choices)
{
    std::vector<char> key(choices.OneIn(2) ? 0 : choices.Below(4));
    for (char& column : key) {
        column = static_cast<char>(1 + choices.Below(255));
    }
    return key;
}

/// A random table definition, which SQLite mostly rejects. No text in it contains a zero byte, because SQLite would end
/// the statement there.
inline DbTableDefinition AnyDefinition(FuzzInput& choices)
{
    DbTableDefinition definition;
    definition.name = "t" + AnyName(choices);
    for (std::size_t left = choices.Below(5); left > 0; --left) {
        definition.columns.push_back(AnyColumn(choices));
    }
    definition.constraints.primaryKey = AnyKey(choices);
    definition.constraints.unique = AnyKey(choices);
    definition.constraints.referenceTable = choices.OneIn(2) ? std::string() : AnyName(choices);
    for (std::size_t left = choices.OneIn(2) ? 0 : choices.Below(4); left > 0; --left) {
        definition.constraints.foreignKey.push_back(AnyName(choices));
    }
    return definition;
}

} // namespace Morvik::sql::tests
