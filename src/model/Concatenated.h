#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace Morvik::sql {

/// The parts one after another, in a text that is allocated once.
std::string Concatenated(std::initializer_list<std::string_view> parts);

} // namespace Morvik::sql
