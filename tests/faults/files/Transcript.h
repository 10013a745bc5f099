#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The result of one operation on a database.
struct Answer {
    std::string operation;
    bool succeeded = false;
    int code = 0;
    std::string message;

    /// The rows that it read, each as one text.
    std::vector<std::string> rows;

    friend bool operator==(const Answer&, const Answer&) = default;
};

/// The results of a sequence of operations.
using Transcript = std::vector<Answer>;

/// Describes the first difference of two transcripts; empty when they are equal.
std::string Difference(const Transcript& actual, const Transcript& expected);

/// Runs every operation of the facade, reads before changes, on the database at `path`: with the library, and with raw
/// SQLite calls. A read-only database rejects the changes.
Transcript FacadeTranscript(const std::string& path, bool readOnly);
Transcript PlainFacadeTranscript(const std::string& path, bool readOnly);

/// Runs a statement and a cursor with every kind of read on the database at `path`, opened for reading: with the
/// library, and with the SQLite calls that the library makes.
Transcript AccessTranscript(const std::string& path);
Transcript PlainAccessTranscript(const std::string& path);

} // namespace Morvik::sql::tests
