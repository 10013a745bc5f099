#pragma once

#include <sql/DbTableColumnDefinition.h>
#include <sql/DbTableConstraints.h>

#include <string>
#include <vector>

namespace Morvik::sql {

/// Describes a whole table for IDatabaseApi::CreateTable.
///
///     DbTableDefinition table;
///     table.name = "package";
///     table.columns = {{"name", DbTableColumnType::Text, 0, PrimaryKey}, {"size", DbTableColumnType::Integer}};
struct DbTableDefinition {
    /// The table's name, written unquoted: quote a name with a blank, a quote or a keyword yourself.
    std::string name{};

    /// The columns in the order in which the table has them.
    std::vector<DbTableColumnDefinition> columns{};

    /// The table-level constraints.
    DbTableConstraints constraints{};

    /// The comma-separated list of table-level constraints: primary key, unique key, foreign key, as far as present. A
    /// foreign key without a referenced table is left out when both keys are empty.
    __attribute__((visibility("default"))) std::string TableConstraintAsString() const;
};

} // namespace Morvik::sql
