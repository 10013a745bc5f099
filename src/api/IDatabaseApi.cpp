#include <sql/IDatabaseApi.h>

namespace Morvik::sql {

// Defined here, so that the interface's type information has one home: casts across the library's boundary need it.
IDatabaseApi::~IDatabaseApi() = default;

} // namespace Morvik::sql
