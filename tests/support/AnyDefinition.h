#pragma once

#include <sql/DbTableDefinition.h>

#include "support/Choices.h"

namespace Morvik::sql::tests {

/// A table's description of any shape, mostly one that SQLite rejects. No text in it holds a zero byte: a statement
/// ends there in SQLite's eyes.
DbTableDefinition AnyDefinition(Choices& choices);

} // namespace Morvik::sql::tests
