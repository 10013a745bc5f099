#pragma once

#include <sql/Config.h>
#include <sql/DbTableColumnDefinition.h>
#include <sql/DbTableConstraints.h>

#include <string>
#include <vector>

namespace Morvik::sql {

/// Describes a complete table for IDatabaseApi::CreateTable.
///
///     DbTableDefinition table;
///     table.name = "package";
///     table.columns = {{.name = "name", .type = DbTableColumnType::Text, .constraintFlags = PrimaryKey},
///                      {.name = "size", .type = DbTableColumnType::Integer}};
/// @ingroup tables
struct DbTableDefinition {
    /// The table's name, written unquoted. A name that contains a blank or a quote or is a keyword works in quotation
    /// marks ("\"my table\""), but not with every operation: see IDatabaseApi.
    std::string name{};

    /// The columns in the order in which the table has them.
    std::vector<DbTableColumnDefinition> columns{};

    /// The table-level constraints.
    DbTableConstraints constraints{};

    /// The comma-separated list of the table-level constraints that are set: primary key, unique key, foreign key. A
    /// foreign key without a referenced table is left out when both keys are empty.
    TKOSQLLITE_EXPORT std::string TableConstraintAsString() const;
};

} // namespace Morvik::sql
