#pragma once

namespace Morvik::sql::tests {

/// While the object lives, every SQLite connection that is opened stops an operation that runs too long, attaches no
/// other file and makes no huge value, so that a damaged file or a made-up statement costs little. Connections that do
/// the same stop at the same step, and read the same where a damaged page leads them past its end (PaddedPages.h).
class BoundedConnections {
public:
    BoundedConnections();
    ~BoundedConnections();

    BoundedConnections(const BoundedConnections&) = delete;
    BoundedConnections& operator=(const BoundedConnections&) = delete;

    /// Call it before each operation: gives every connection its steps back, and SQLite the same random numbers.
    void BeginOperation();
};

} // namespace Morvik::sql::tests
