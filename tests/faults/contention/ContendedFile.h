#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// The output of a contender.
struct ContenderReport {
    /// The numbers of the entries that were acknowledged, in their order.
    std::vector<int> entries;

    int reads = 0;
    int refusals = 0;
};

/// A database with a balance and no entries, and the programs that use it from other processes (Contender.cpp).
class ContendedFile : public testing::Test {
protected:
    ContendedFile();

    /// The command line of one contender; Contender.cpp lists its arguments.
    std::vector<std::string> Contender(const std::string& role, const std::string& which, double seconds,
                                       const std::string& timeout) const;

    /// Parses the output of a contender. Fails the test if the contender did not end with 0.
    static ContenderReport Report(const ChildResult& result);

    /// Expects exactly the acknowledged entries of the writers 1, 2, ... in the file, and a balance that agrees with
    /// them.
    void ExpectExactly(const std::vector<ContenderReport>& writers) const;

    const TemporaryDirectory directory;
    const std::string path = directory.File("contended.db");
};

} // namespace Morvik::sql::tests
