#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace Morvik::sql {

/// Returns the pieces concatenated, in a string that is allocated once.
std::string StrCat(std::initializer_list<std::string_view> pieces);

/// Appends the items to `text`, separated by "," without blanks. An empty item leaves nothing between its commas.
template <typename Items>
void StrAppendJoin(std::string& text, const Items& items)
{
    bool first = true;
    for (const auto& item : items) {
        if (!first) {
            text += ',';
        }
        text += item;
        first = false;
    }
}

/// Appends one item, which must not be empty, after a "," unless `text` is empty.
inline void StrAppendItem(std::string& text, std::string_view item)
{
    if (!text.empty()) {
        text += ',';
    }
    text += item;
}

} // namespace Morvik::sql
