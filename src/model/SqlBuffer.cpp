#include "model/SqlBuffer.h"

#include <utility>

#include "model/StreamText.h"

namespace Morvik::sql {

SqlBuffer::SqlBuffer(std::size_t expectedSize)
    : m_text(expectedSize, '\0'), m_end(m_text.data()), m_limit(m_end + expectedSize),
      m_hasPlainNumbers(StreamsWritePlainNumbers())
{}

std::string SqlBuffer::Release()
{
    m_text.resize(Size());
    return std::move(m_text);
}

// The expected size is almost right, so growing by an eighth wastes little.
void SqlBuffer::Grow(std::size_t missing)
{
    const std::size_t used = Size();
    m_text.resize(used + missing + used / 8);
    m_end = m_text.data() + used;
    m_limit = m_text.data() + m_text.size();
}

} // namespace Morvik::sql
