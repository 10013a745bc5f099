#pragma once

#include <string>

namespace Morvik::sql::tests {

/// The bytes of a database that the library made: the tables "reading" (with the index "by_label") and "note", whose
/// texts and blobs fill several pages, and free pages of a dropped table.
std::string SampleDatabase(int pageSize);

} // namespace Morvik::sql::tests
