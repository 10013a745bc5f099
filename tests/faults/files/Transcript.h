#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/FacadeDriver.h"

namespace Morvik::sql::tests {

/// The outcomes of a sequence of operations.
using Transcript = std::vector<StepOutcome>;

/// Describes the first difference of two transcripts; empty when they are equal.
std::string Difference(const Transcript& actual, const Transcript& expected);

/// The bytes of a database for the operations below: the tables "reading" (with the index "by_label") and "note", whose
/// texts and blobs fill several pages, and free pages of a dropped table.
std::string SampleDatabase(std::size_t pageSize);

/// Runs every operation on the database at `path`, with the library and with the reference implementation: a statement
/// and a cursor with every kind of read on the database opened for reading, then the facade's operations, reads before
/// changes. A read-only database rejects the changes.
Transcript LibraryTranscript(const std::string& path, bool readOnly);
Transcript ReferenceTranscript(const std::string& path, bool readOnly);

} // namespace Morvik::sql::tests
