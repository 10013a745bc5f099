#include <sql/IDatabaseApi.h>

namespace Morvik::sql {

// Defined in this file so that the interface's type information is in the library only: casts across the library's
// boundary need it.
IDatabaseApi::~IDatabaseApi() = default;

} // namespace Morvik::sql
