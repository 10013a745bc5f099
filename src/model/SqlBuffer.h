#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace Morvik::sql {

/// The text of a statement while it is built. A large write appends millions of pieces of a few bytes, so appending
/// must cost little more than the copy. Memory is allocated once if the expected size is right; numbers reserve more
/// than they need, so a short statement that ends with a number may allocate twice. When memory runs out,
/// std::bad_alloc is thrown and the text is never cut short.
class SqlBuffer {
public:
    explicit SqlBuffer(std::size_t expectedSize);
    SqlBuffer(const SqlBuffer&) = delete;
    SqlBuffer& operator=(const SqlBuffer&) = delete;

    std::size_t Size() const { return static_cast<std::size_t>(m_end - m_text.data()); }

    /// Whether numbers can be written without a stream: true if, when the buffer was made, a stream wrote them
    /// as std::to_chars does.
    bool HasPlainNumbers() const { return m_hasPlainNumbers; }

    void Append(char character)
    {
        char* const end = Reserve(1);
        *end = character;
        m_end = end + 1;
    }

    /// The piece must not be a null view.
    void Append(std::string_view piece)
    {
        m_end = static_cast<char*>(std::memcpy(Reserve(piece.size()), piece.data(), piece.size())) + piece.size();
    }

    void Append(char character, std::string_view piece)
    {
        char* const end = Reserve(piece.size() + 1);
        *end = character;
        m_end = static_cast<char*>(std::memcpy(end + 1, piece.data(), piece.size())) + piece.size();
    }

    /// Returns the end of the text, with space for `size` bytes after it. SetEnd() tells how many of them were written.
    char* Reserve(std::size_t size)
    {
        if (static_cast<std::size_t>(m_limit - m_end) < size) {
            Grow(size);
        }
        return m_end;
    }

    void SetEnd(char* end) { m_end = end; }

    /// Drops everything after the first `size` bytes.
    void Truncate(std::size_t size) { m_end = m_text.data() + size; }

    /// Returns the text, which is valid during the lifetime of the buffer. Nothing may be appended afterwards.
    const std::string& Text();

private:
    [[gnu::cold]] void Grow(std::size_t missing);

    std::string m_text;
    char* m_end;
    char* m_limit;
    bool m_hasPlainNumbers;
};

} // namespace Morvik::sql
