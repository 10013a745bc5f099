#include <gtest/gtest.h>

#include <future>
#include <latch>

#include "faults/files/Transcript.h"
#include "support/DatabaseFiles.h"
#include "support/FacadeOperations.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

// Facades on separate threads, each with a separate file, share no data that needs a lock. The thread sanitizer (preset
// tsan) checks this; without the sanitizer these tests still compare every result.

constexpr std::size_t Threads = 2;

/// Runs `work(number)`, which returns what went wrong, on every thread at once, and expects no failure.
template <typename Work>
void ExpectNoFailureOnThreads(Work work)
{
    std::latch start(Threads);
    std::vector<std::future<std::string>> failures;
    for (std::size_t number = 0; number < Threads; ++number) {
        failures.push_back(std::async(std::launch::async, [&, number] {
            start.arrive_and_wait();
            return work(number);
        }));
    }
    for (std::future<std::string>& failure : failures) {
        EXPECT_EQ(failure.get(), "") << "on thread " << &failure - failures.data();
    }
}

TEST(FacadeThreadsTest, EveryOperationOfTwoThreadsEqualsTheReference)
{
    const TemporaryDirectory directory;
    const int rounds = Rounds(30, 1000);
    DatabaseFiles sample;
    sample.contents[""] = SampleDatabase(1024);

    ExpectNoFailureOnThreads([&](std::size_t number) {
        const std::string path = directory.File(std::to_string(number));
        sample.PutBack(path);
        const Transcript expected = ReferenceTranscript(path, false);
        std::string difference;
        for (int round = 0; round < rounds && difference.empty(); ++round) {
            sample.PutBack(path);
            difference = Difference(LibraryTranscript(path, false), expected);
        }
        return difference;
    });
}

TEST(FacadeThreadsTest, RandomOperationsOfTwoThreadsEqualTheReference)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        const TemporaryDirectory directory;
        const int operations = Rounds(1500, 50000);

        ExpectNoFailureOnThreads([&](std::size_t number) {
            FuzzInput choices(seed + number);
            FacadeOperations facade(directory.Path() / std::to_string(number),
                                    FacadeOperations::GlobalLocale::Unchanged);
            std::string difference;
            for (int i = 0; i < operations && difference.empty(); ++i) {
                difference = facade.RunOne(choices);
            }
            return difference.empty() ? facade.CompareFiles() : difference;
        });
    }
}

} // namespace

} // namespace Morvik::sql::tests
