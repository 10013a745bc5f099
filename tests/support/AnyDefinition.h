#pragma once

#include <sql/DbTableDefinition.h>

#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// A random table definition, which SQLite mostly rejects. No text in it contains a zero byte, because SQLite would end
/// the statement there.
DbTableDefinition AnyDefinition(FuzzInput& choices);

} // namespace Morvik::sql::tests
