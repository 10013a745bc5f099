#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace Morvik::sql {

/// A statement under construction. Its pieces are a few bytes each and come by the million, so that appending must cost
/// little more than the copy; memory is allocated once where the expected size holds. Running out of memory throws
/// std::bad_alloc and never cuts the text short.
class StatementText {
public:
    explicit StatementText(std::size_t expectedSize);

    std::size_t Size() const { return static_cast<std::size_t>(m_end - m_text.data()); }

    /// Whether a stream wrote numbers in their plain form when the text was begun; no stream is needed then.
    bool HasPlainNumbers() const { return m_hasPlainNumbers; }

    StatementText& operator+=(char character)
    {
        *Room(1) = character;
        ++m_end;
        return *this;
    }

    StatementText& operator+=(std::string_view piece)
    {
        m_end = std::copy(piece.begin(), piece.end(), Room(piece.size()));
        return *this;
    }

    /// The end of the text, with room for `size` bytes behind it; AdvanceTo() says how far they were written.
    [[gnu::always_inline]] char* Room(std::size_t size)
    {
        if (static_cast<std::size_t>(m_limit - m_end) < size) {
            Grow(size);
        }
        return m_end;
    }

    void AdvanceTo(char* end) { m_end = end; }

    /// Drops everything behind the first `size` bytes.
    void Truncate(std::size_t size) { m_end = m_text.data() + size; }

    /// The finished text; nothing can be appended any more.
    std::string Take();

private:
    [[gnu::cold]] void Grow(std::size_t missing);

    std::string m_text;
    char* m_end;
    char* m_limit;
    bool m_hasPlainNumbers;
};

} // namespace Morvik::sql
