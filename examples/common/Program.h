#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace examples {

/// Runs `body` as the whole of the program `name` and returns its exit status: 0, or 1 (2 for a UsageFailure) after one
/// line on standard error. What was written to standard output counts too: if it could not all be written, the program
/// has failed.
int RunProgram(const std::string& name, const std::function<void()>& body);

/// Where the program `name` keeps the file `file` unless it is told otherwise: below $XDG_DATA_HOME, or below
/// ~/.local/share where that is not set.
std::string DefaultDatabasePath(const std::string& name, const std::string& file);

/// `text` as the path that --database gives. Throws UsageFailure if it is empty.
std::string DatabasePath(const std::string& text);

/// The number that `text` is, from `smallest` to `largest`. Throws UsageFailure naming `option` for anything else.
int WholeNumber(std::string_view option, std::string_view text, int smallest, int largest);
double Number(std::string_view option, const std::string& text, double smallest, double largest);

} // namespace examples
