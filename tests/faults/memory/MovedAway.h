#pragma once

#include <utility>

#include "support/Undestroyed.h"

namespace Morvik::sql::tests {

/// What was moved out of `source` into a new object, and goes back when this one ends, whatever ended it: a connection
/// or a cursor that was moved from may not be destroyed.
template <typename T>
class MovedAway {
public:
    explicit MovedAway(T& source) : m_source(source), m_taken(std::move(source)) {}
    ~MovedAway() { m_source = std::move(*m_taken); }

    MovedAway(const MovedAway&) = delete;
    MovedAway& operator=(const MovedAway&) = delete;

    T& operator*() { return *m_taken; }
    T* operator->() { return &*m_taken; }

private:
    T& m_source;
    Undestroyed<T> m_taken;
};

} // namespace Morvik::sql::tests
