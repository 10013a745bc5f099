#pragma once

#include "support/OomInjector.h"

namespace Morvik::sql::tests {

/// Counts the allocations of a thread down to the failing one.
class FaultCounter {
public:
    void Set(int succeeding, FailureExtent extent)
    {
        m_left = succeeding;
        m_extent = extent;
        m_fired = false;
    }

    void Clear() { m_left = NoneFails; }

    /// Whether the allocation that is being requested fails.
    bool Reached()
    {
        if (m_left == NoneFails) {
            return false;
        }
        if (m_left > 0) {
            --m_left;
            return false;
        }
        if (m_extent == FailureExtent::Once) {
            m_left = NoneFails;
        }
        m_fired = true;
        return true;
    }

    /// Whether an allocation failed since Set().
    bool Fired() const { return m_fired; }

private:
    static constexpr int NoneFails = -1;

    int m_left = NoneFails;
    FailureExtent m_extent = FailureExtent::Once;
    bool m_fired = false;
};

} // namespace Morvik::sql::tests
