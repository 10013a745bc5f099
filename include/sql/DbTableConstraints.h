#pragma once

#include <sql/Config.h>

#include <string>
#include <vector>

namespace Morvik::sql {

/// The table-level constraints of a table to create: a composite primary key, a composite unique key and a foreign key.
/// Nothing is checked, quoted or escaped.
///
/// Key columns are single characters, so a table-level key can name one-character columns only; declare a key with a
/// longer name on the column itself (DbTableColumnDefinition).
///
/// A table with a foreign key cannot be created: the foreign key's text has one closing parenthesis too many, and
/// SQLite rejects it. If there is no referenced table, primary key or unique key, the foreign key is left out and the
/// table is created. Create a table with a foreign key through IDatabaseApi::Execute.
/// @ingroup tables
struct DbTableConstraints {
    /// Primary-key columns, one character each. Rows that conflict are skipped silently.
    std::vector<char> primaryKey{};

    /// Unique-key columns, one character each. Rows that conflict are skipped silently.
    std::vector<char> unique{};

    /// The table that the foreign key references.
    std::string referenceTable{};

    /// The foreign key's column names, the same on both sides.
    std::vector<std::string> foreignKey{};

    /// The foreign-key clause. It always ends in " )"; without foreign-key columns, it is " )" only.
    TKOSQLLITE_EXPORT std::string ForeignKeyConstraintAsString() const;
};

} // namespace Morvik::sql
