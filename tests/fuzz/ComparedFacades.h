#pragma once

#include <string>
#include <utility>

#include "fuzz/FuzzTarget.h"
#include "support/FacadeDriver.h"

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

/// The facade and its reference implementation, which take the same steps with bounded connections.
class ComparedFacades {
public:
    /// Each argument is the text that one of the two drivers puts before every path.
    explicit ComparedFacades(std::string beforeLibraryPath = {}, std::string beforeReferencePath = {})
        : m_library(std::move(beforeLibraryPath)), m_reference(std::move(beforeReferencePath))
    {}

    /// Takes a step on both facades, and reports a finding if the outcomes differ.
    template <typename Step>
    void Both(const Step& step)
    {
        m_connections.BeginOperation();
        const StepOutcome actual = step(m_library);
        m_connections.BeginOperation();
        RequireSame("The difference", Difference(actual, step(m_reference)), "");
        // The names and texts of the input are left out, because they would make every input look new.
        CountFeature(actual.operation.substr(0, actual.operation.find(' ')) + std::to_string(actual.code) +
                     actual.message.substr(0, actual.message.find(':')));
        const std::string count = std::to_string(actual.results.size());
        CountFeature("results" + count.substr(0, 1) + std::to_string(count.size()));
    }

    /// The rows of the library's last read.
    const DbTableData& Data() const { return m_library.Data(); }

private:
    BoundedConnections m_connections;
    FacadeDriver<DatabaseApi> m_library;
    FacadeDriver<ReferenceFacade> m_reference;
};

} // namespace Morvik::sql::tests
