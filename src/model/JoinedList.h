#pragma once

#include <string>
#include <string_view>

namespace Morvik::sql {

/// Appends the items to `text`, separated by "," without blanks. An empty item leaves an empty place.
template <typename Text, typename Items>
void AppendJoined(Text& text, const Items& items)
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

/// Appends one item that is not empty, behind a "," unless it is the first.
inline void AppendItem(std::string& text, std::string_view item)
{
    if (!text.empty()) {
        text += ',';
    }
    text += item;
}

} // namespace Morvik::sql
