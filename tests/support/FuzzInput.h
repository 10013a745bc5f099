#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Morvik::sql::tests {

/// The source of a generated test's decisions: a seeded generator, or the bytes of a given input.
class FuzzInput {
public:
    explicit FuzzInput(std::uint64_t seed) : m_generator(seed) {}
    explicit FuzzInput(std::span<const std::uint8_t> bytes) : m_bytes(bytes), m_fromBytes(true) {}

    /// A number from 0 to `count` - 1.
    std::size_t Below(std::size_t count)
    {
        if (!m_fromBytes) {
            return static_cast<std::size_t>(m_generator() % count);
        }
        // Uses as many bytes as the range needs; 0 when no bytes are left.
        std::uint64_t number = 0;
        for (std::uint64_t reached = 1; reached < count && !m_bytes.empty(); reached *= 256) {
            number = number * 256 + m_bytes.front();
            m_bytes = m_bytes.subspan(1);
        }
        return static_cast<std::size_t>(number % count);
    }

    bool OneIn(std::size_t count) { return Below(count) == 0; }

    template <typename Item>
    const Item& Of(const std::vector<Item>& items)
    {
        return items[Below(items.size())];
    }

    /// 32 random bits.
    std::uint32_t Bits()
    {
        const auto upper = static_cast<std::uint32_t>(Below(0x10000));
        const auto lower = static_cast<std::uint32_t>(Below(0x10000));
        return upper << 16 | lower;
    }

    /// At most `longest` characters of `alphabet`.
    std::string TextOf(std::string_view alphabet, std::size_t longest)
    {
        std::string text;
        for (std::size_t left = Below(longest + 1); left > 0; --left) {
            text += alphabet[Below(alphabet.size())];
        }
        return text;
    }

    /// `count` bytes of any value, or the bytes that are left.
    std::string Bytes(std::size_t count)
    {
        std::string bytes;
        for (; count > 0 && Left(); --count) {
            bytes += static_cast<char>(Below(256));
        }
        return bytes;
    }

    /// False when the given bytes are used up; a generator never ends.
    bool Left() const { return !m_fromBytes || !m_bytes.empty(); }

private:
    std::mt19937_64 m_generator;
    std::span<const std::uint8_t> m_bytes;
    bool m_fromBytes = false;
};

} // namespace Morvik::sql::tests
