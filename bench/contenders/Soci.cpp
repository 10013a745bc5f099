#include "contenders/Soci.h"

#include <soci/sqlite3/soci-sqlite3.h> // includes <sqlite3.h> in a namespace, so it is not in the header

namespace Morvik::sql::bench {

Soci::Soci(const std::string& path) : m_session(soci::sqlite3, path) {}

} // namespace Morvik::sql::bench
