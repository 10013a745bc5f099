#pragma once

namespace Morvik::sql::bench {

/// Ends the program with a failure unless `right` holds: a figure of a wrong result is worth nothing.
void Require(bool right, const char* what, const char* detail = "");

} // namespace Morvik::sql::bench
