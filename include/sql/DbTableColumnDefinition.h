#pragma once

#include <sql/Config.h>
#include <sql/DbTableColumnConstraint.h>
#include <sql/DbTableColumnType.h>

#include <cstdint>
#include <map>
#include <string>

namespace Morvik::sql {

/// Describes one column of a table to create.
///
///     DbTableColumnDefinition{.name = "qty", .type = DbTableColumnType::Integer,
///                             .constraintFlags = NotNull | Default, .constraintArguments = {{Default, "0"}}}
///
/// renders as `qty INTEGER NOT NULL DEFAULT 0`. Name the members: {"qty", DbTableColumnType::Integer, NotNull} compiles
/// without a warning and puts the constraint into `reserved`, which leaves the column without it. Nothing is checked,
/// quoted or escaped, and rendering never fails; SQLite rejects a malformed column when the table is created.
/// @ingroup tables
struct DbTableColumnDefinition {
    /// The column's name, written unquoted. If a name contains a blank or a quote or is a keyword, quote it yourself
    /// ("\"order\"").
    std::string name{};

    /// The declared type. A time tag declares the storage type of the value that it writes: TEXT, INTEGER or REAL.
    /// None, Null and unknown values declare no type.
    DbTableColumnType type = DbTableColumnType::None;

    /// No operation reads this member; it keeps the layout of this struct.
    std::int32_t reserved = 0;

    /// The constraints that are present: DbTableColumnConstraint values combined with |. Other bits are ignored.
    std::uint32_t constraintFlags = 0;

    /// Text written after a constraint's keyword, exactly as stored. A text that is empty, or whose constraint is not
    /// in `constraintFlags`, is left out. An ON CONFLICT clause in it changes what IDatabaseApi::WriteTableValues
    /// leaves after a conflict.
    std::map<DbTableColumnConstraint, std::string> constraintArguments{};

    /// The constraint clause alone, in the order PRIMARY KEY, NOT NULL, UNIQUE, CHECK, DEFAULT; empty without flags.
    TKOSQLLITE_EXPORT std::string ColumnConstraintsAsString() const;

    /// The complete column definition: name, blank, type, blank, constraint clause. Both blanks are always written, so
    /// a column without constraints ends in a blank.
    TKOSQLLITE_EXPORT std::string ColumnDefinitionAsString() const;
};

} // namespace Morvik::sql
