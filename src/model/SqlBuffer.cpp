#include "model/SqlBuffer.h"

#include "model/StreamText.h"

namespace Morvik::sql {

SqlBuffer::SqlBuffer(std::size_t expectedSize)
    : m_text(expectedSize, '\0'), m_end(m_text.data()), m_limit(m_end + expectedSize),
      m_hasPlainNumbers(StreamsWritePlainNumbers())
{}

const std::string& SqlBuffer::Text()
{
    return m_text.erase(Size());
}

void SqlBuffer::Grow(std::size_t missing)
{
    const std::size_t used = Size();
    m_text.resize(used + missing); // the string at least doubles its capacity, so few calls allocate
    m_end = m_text.data() + used;
    m_limit = m_text.data() + m_text.size();
}

} // namespace Morvik::sql
