#pragma once

#include <iosfwd>

namespace examples {

class OwnDatabase;

/// Writes what an inventory tells: how many packages and how much of the disk they take, the marked largest ones, how
/// sizes are spread, and the packages of every section.
void PrintReport(std::ostream& out, OwnDatabase& inventory);

} // namespace examples
