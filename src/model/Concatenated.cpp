#include "model/Concatenated.h"

#include <cstddef>

namespace Morvik::sql {

std::string Concatenated(std::initializer_list<std::string_view> parts)
{
    std::size_t size = 0;
    for (const std::string_view part : parts) {
        size += part.size();
    }
    std::string text;
    text.reserve(size);
    for (const std::string_view part : parts) {
        text += part;
    }
    return text;
}

} // namespace Morvik::sql
