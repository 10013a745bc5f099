#pragma once

#include <string>
#include <vector>

#include "faults/storage/StorageSide.h"

namespace Morvik::sql::tests {

inline std::string RowText(const DescribedRow& row)
{
    std::string text;
    for (const std::string& cell : row) {
        text += '[' + cell + ']';
    }
    return text + '\n';
}

inline StepOutcome OutcomeOf(bool succeeded, int code, const std::string& message, const std::string& rows)
{
    return {succeeded, std::string(succeeded ? "true" : "false") + ", code " + std::to_string(code) + " \"" + message +
                           "\"\n" + rows};
}

} // namespace Morvik::sql::tests
