#pragma once

#include <utility>

namespace Morvik::sql::tests {

/// An object whose destructor never runs. Moved-from connections and cursors may not be destroyed, so tests move from
/// this object; anything else that it holds is leaked.
///
///     Undestroyed<SqlTable> source(database);
///     SqlTable table(std::move(*source));
template <typename T>
class Undestroyed {
public:
    template <typename... Arguments>
    explicit Undestroyed(Arguments&&... arguments) : m_object(std::forward<Arguments>(arguments)...)
    {}
    ~Undestroyed() {} // NOLINT(modernize-use-equals-default): that would be deleted for T's sake

    Undestroyed(const Undestroyed&) = delete;
    Undestroyed& operator=(const Undestroyed&) = delete;

    T& operator*() { return m_object; }
    T* operator->() { return &m_object; }

private:
    union {
        T m_object;
    };
};

} // namespace Morvik::sql::tests
