#pragma once

namespace Morvik::sql::bench {

/// Ends the program with a failure unless `right` holds, because the time of a wrong result is useless.
void Require(bool right, const char* what, const char* detail = "");

} // namespace Morvik::sql::bench
