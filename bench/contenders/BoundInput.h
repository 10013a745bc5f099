#pragma once

#include "support/Sample.h"

#include <vector>

namespace Morvik::sql::bench {

/// The input of a contender that binds values to prepared statements.
struct BoundInput {
    using Write = std::vector<SampleRow>;
    using Rows = std::vector<SampleRow>;
    using Change = SampleRow;
    using Query = int;

    static Write MakeWrite(const std::vector<SampleRow>& rows) { return rows; }
    static Change MakeChange(const SampleRow& row) { return row; }
    static Query MakeQuery(int number) { return number; }
    static Totals SumOf(const Rows& rows) { return Sum(rows); }
};

} // namespace Morvik::sql::bench
