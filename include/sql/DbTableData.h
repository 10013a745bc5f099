#pragma once

#include <sql/DbTableRowValues.h>

#include <vector>

namespace Morvik::sql {

/// The rows of a result. Reads append to `rows` and never clear it; column names are not part of a result.
/// @ingroup rows
struct DbTableData {
    /// The rows in the order in which they were read.
    std::vector<DbTableRowValues> rows{};
};

} // namespace Morvik::sql
