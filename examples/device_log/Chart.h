#pragma once

#include <iosfwd>

namespace examples {

class OwnDatabase;

/// Writes the last `count` samples of a log as a table, oldest first, with a bar for the load and one for the memory.
void PrintLastSamples(std::ostream& out, OwnDatabase& log, int count);

} // namespace examples
