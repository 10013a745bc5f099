#pragma once

namespace Morvik::sql::bench {

/// Adds the processor, the system, the compiler and SQLite's version to the benchmark's own context, so that the
/// figures say by themselves where they come from.
void AddMachineToContext();

} // namespace Morvik::sql::bench
