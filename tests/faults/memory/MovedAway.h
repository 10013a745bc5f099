#pragma once

#include <utility>

#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

/// Moves `source` into a new object, and moves it back when this object is destroyed, also by an exception: a
/// moved-from connection or cursor may not be destroyed.
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
    NoDestructor<T> m_taken;
};

} // namespace Morvik::sql::tests
