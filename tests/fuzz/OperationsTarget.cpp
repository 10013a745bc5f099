// Any sequence of facade operations must give the outcomes of the reference implementation, and leave the same files.

#include <span>
#include <string>

#include "fuzz/FuzzTarget.h"
#include "support/FacadeOperations.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

constexpr int MostOperations = 300;

void TryOperations(FuzzInput& choices)
{
    const TemporaryDirectory directory;
    FacadeOperations operations(directory.Path());
    for (int operation = 0; operation < MostOperations && choices.Left(); ++operation) {
        RequireSame("The difference at operation " + std::to_string(operation), operations.RunOne(choices), "");
    }
    RequireSame("The difference of the files", operations.CompareFiles(), "");
}

} // namespace

} // namespace Morvik::sql::tests

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Morvik::sql::tests::FuzzInput choices(std::span(data, size));
    Morvik::sql::tests::TryOperations(choices);
    return 0;
}
