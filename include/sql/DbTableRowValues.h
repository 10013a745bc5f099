#pragma once

#include <sql/DbTableColumnValue.h>

#include <vector>

namespace Morvik::sql {

/// One row of a result or of a write request.
/// @ingroup rows
struct DbTableRowValues {
    /// The row's cells, first column first.
    std::vector<DbTableColumnValue> cells{};
};

} // namespace Morvik::sql
