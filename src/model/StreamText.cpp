#include "model/StreamText.h"

#include <cfenv>
#include <cstring>
#include <ios>
#include <locale>
#include <new>
#include <sstream>
#include <string_view>

#include "model/SqlBuffer.h"

namespace Morvik::sql {

namespace {

template <typename Facet>
bool SharesFacet(const std::locale& left, const std::locale& right)
{
    return &std::use_facet<Facet>(left) == &std::use_facet<Facet>(right);
}

} // namespace

// The facets are compared and not the names, because a locale that was combined from the classic one keeps its name.
// This comparison is slow, so the usual case is tested first: two locale objects with the same bytes are the same
// locale.
bool StreamsWritePlainNumbers()
{
    const std::locale current;
    const std::locale& classic = std::locale::classic();
    return std::fegetround() == FE_TONEAREST &&
           (std::memcmp(&current, &classic, sizeof current) == 0 ||
            (SharesFacet<std::num_put<char>>(current, classic) && SharesFacet<std::numpunct<char>>(current, classic) &&
             SharesFacet<std::ctype<char>>(current, classic)));
}

[[gnu::cold, gnu::noinline]] bool AppendStreamed(SqlBuffer& text, StreamInsertion insert, const void* value)
{
    std::ostringstream stream;
    // Without this, the stream would ignore a failed allocation and write an incomplete number.
    stream.exceptions(std::ios_base::badbit);
    try {
        insert(stream, value);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        // A facet threw an exception. As with any stream, the text that it wrote before is kept.
    }
    const std::string_view written = stream.view();
    text.Append(written);
    return !written.empty();
}

} // namespace Morvik::sql
