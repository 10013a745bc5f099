#pragma once

#include <string>

namespace Morvik::sql::tests {

/// Tells libFuzzer that the input made `feature` happen, so that it keeps inputs that reach new code in SQLite, which
/// it cannot observe. Has no other effect.
void CountFeature(const std::string& feature);

} // namespace Morvik::sql::tests
