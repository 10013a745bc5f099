#pragma once

#include <sql/Config.h>

#include <cstdint>

namespace Morvik::sql {

/// Column constraints. Each value is one bit, so that they combine into DbTableColumnDefinition::constraintFlags
/// (PrimaryKey | NotNull) and serve as keys of its constraintArguments.
/// @ingroup tables
enum DbTableColumnConstraint : std::uint32_t {
    /// PRIMARY KEY; an argument such as "AUTOINCREMENT" follows it.
    PrimaryKey = 1,
    /// UNIQUE
    Unique = 2,
    /// NOT NULL
    NotNull = 4,
    /// CHECK; the argument includes the parentheses: "(age >= 0)".
    Check = 8,
    /// DEFAULT; its argument is written as given: "0", "'none'", "(datetime('now'))".
    Default = 16,
};

} // namespace Morvik::sql
