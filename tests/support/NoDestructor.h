#pragma once

#include <utility>

namespace Morvik::sql::tests {

/// An object whose destructor never runs. Moved-from connections and cursors may not be destroyed, so tests move from
/// this object; anything else that it holds is leaked.
///
///     NoDestructor<SqlTable> source(database);
///     SqlTable table(std::move(*source));
template <typename T>
class NoDestructor {
public:
    template <typename... Arguments>
    explicit NoDestructor(Arguments&&... arguments) : m_object(std::forward<Arguments>(arguments)...)
    {}
    ~NoDestructor() {} // NOLINT(modernize-use-equals-default): a default one is deleted unless T's is trivial

    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;

    T& operator*() { return m_object; }
    T* operator->() { return &m_object; }

private:
    union {
        T m_object;
    };
};

} // namespace Morvik::sql::tests
