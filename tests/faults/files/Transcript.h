#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// What one operation on a database answered.
struct Answer {
    std::string operation;
    bool succeeded = false;
    int code = 0;
    std::string message;

    /// What it read, each row in one text.
    std::vector<std::string> rows;

    friend bool operator==(const Answer&, const Answer&) = default;
};

/// The answers of a sequence of operations.
using Transcript = std::vector<Answer>;

/// The first difference of two transcripts in words; empty when they are equal.
std::string Difference(const Transcript& actual, const Transcript& expected);

/// Every operation of the facade, reads before changes, on the database at `path`: by the library, and by plain SQLite
/// calls. A read-only one is refused its changes.
Transcript FacadeTranscript(const std::string& path, bool readOnly);
Transcript PlainFacadeTranscript(const std::string& path, bool readOnly);

/// A statement and a cursor with every kind of read, on the database at `path`, opened for reading: by the library, and
/// by the SQLite calls that they stand for.
Transcript AccessTranscript(const std::string& path);
Transcript PlainAccessTranscript(const std::string& path);

} // namespace Morvik::sql::tests
