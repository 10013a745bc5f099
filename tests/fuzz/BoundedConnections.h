#pragma once

namespace Morvik::sql::tests {

/// While the object lives, every SQLite connection that is opened stops an operation that runs too long, attaches no
/// other file and makes no huge value, so that a damaged file or a random statement takes little time. Two connections
/// that do the same work stop at the same step, and read the same bytes where a damaged page makes them read past its
/// end.
class BoundedConnections {
public:
    BoundedConnections();
    ~BoundedConnections();

    BoundedConnections(const BoundedConnections&) = delete;
    BoundedConnections& operator=(const BoundedConnections&) = delete;

    /// Call it before each operation: resets the step counter of every connection, and SQLite's random number
    /// generator.
    void BeginOperation();
};

} // namespace Morvik::sql::tests
