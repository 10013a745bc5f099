#pragma once

#include <string>
#include <string_view>

namespace Morvik::sql::tests {

/// The text with every `quote` in it doubled.
inline std::string Doubled(std::string_view text, char quote)
{
    std::string doubled;
    for (const char c : text) {
        doubled.append(c == quote ? 2 : 1, c);
    }
    return doubled;
}

/// The text between two of these quotes, as SQL writes a text ('it''s') or a name ("a ""table""").
inline std::string Quoted(std::string_view text, char quote)
{
    return quote + Doubled(text, quote) + quote;
}

/// Two hexadecimal digits for each byte.
inline std::string Hex(std::string_view bytes)
{
    static constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string hex;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += {Digits[byte >> 4], Digits[byte & 15]};
    }
    return hex;
}

} // namespace Morvik::sql::tests
