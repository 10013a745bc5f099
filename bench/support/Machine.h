#pragma once

#include <cstdio>

namespace Morvik::sql::bench {

/// Writes a JSON object that describes the machine: date, processor, system, compiler, SQLite and load.
void WriteMachine(std::FILE* output);

} // namespace Morvik::sql::bench
