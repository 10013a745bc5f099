#pragma once

#include <string>

namespace Morvik::sql::tests {

/// Tells libFuzzer that the input made `feature` happen, so that it keeps inputs that lead somewhere new in SQLite,
/// whose code it cannot see. Nothing else happens.
void CountFeature(const std::string& feature);

} // namespace Morvik::sql::tests
