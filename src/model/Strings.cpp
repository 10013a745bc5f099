#include "model/Strings.h"

#include <cstddef>

namespace Morvik::sql {

std::string StrCat(std::initializer_list<std::string_view> pieces)
{
    std::size_t size = 0;
    for (const std::string_view piece : pieces) {
        size += piece.size();
    }
    std::string text;
    text.reserve(size);
    for (const std::string_view piece : pieces) {
        text += piece;
    }
    return text;
}

} // namespace Morvik::sql
