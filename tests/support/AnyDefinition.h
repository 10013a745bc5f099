#pragma once

#include <sql/DbTableDefinition.h>

#include "support/Choices.h"

namespace Morvik::sql::tests {

/// A random table definition, which SQLite mostly rejects. No text in it contains a zero byte, because SQLite would end
/// the statement there.
DbTableDefinition AnyDefinition(Choices& choices);

} // namespace Morvik::sql::tests
