#pragma once

#include <string>

namespace Morvik::sql {

/// Appends the items to `text`, separated by "," without blanks. An empty item leaves an empty place.
template <typename Items>
void AppendJoined(std::string& text, const Items& items)
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

} // namespace Morvik::sql
