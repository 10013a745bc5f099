#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// What a contender wrote to standard output.
struct ContenderReport {
    /// The numbers of the entries that were acknowledged, in their order.
    std::vector<int> entries;

    int reads = 0;
    int refusals = 0;
};

/// A database with one balance and no entries yet, and programs that use it from outside (Contender.cpp).
class ContendedFile : public testing::Test {
protected:
    ContendedFile();

    /// The command line of one contender; its arguments are those that Contender.cpp lists.
    std::vector<std::string> Contender(const std::string& role, const std::string& which, double seconds,
                                       const std::string& timeout) const;

    /// What a contender wrote. A contender that did not end well is a failure.
    static ContenderReport Report(const ChildResult& result);

    /// Expects exactly the acknowledged entries of the writers 1, 2, ... in the file, and the balance that they make.
    void ExpectExactly(const std::vector<ContenderReport>& writers) const;

    const TemporaryDirectory directory;
    const std::string path = directory.File("contended.db");
};

} // namespace Morvik::sql::tests
