#pragma once

#include <stdexcept>
#include <string>

namespace examples {

/// Ends a program with one line on standard error; see RunProgram().
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A command line that cannot be understood; the program ends with status 2 instead of 1.
class UsageFailure : public Failure {
public:
    using Failure::Failure;
};

} // namespace examples
