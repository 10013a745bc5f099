#include "fuzz/BoundedConnections.h"

#include <sqlite3.h>

#include <algorithm>
#include <deque>

#include "fuzz/PaddedPages.h"

namespace Morvik::sql::tests {

namespace {

constexpr int InstructionsPerStep = 100;
constexpr int StepsPerOperation = 500;
constexpr int LongestValue = 1'000'000;
constexpr int RandomSeed = 1;

// One counter for each opened connection; a deque never moves its elements.
std::deque<int> stepsLeft;

int TakeStep(void* left)
{
    int& steps = *static_cast<int*>(left);
    --steps;
    return steps < 0 ? 1 : 0;
}

int Bound(sqlite3* handle, char** /*message*/, const sqlite3_api_routines* /*routines*/)
{
    sqlite3_progress_handler(handle, InstructionsPerStep, TakeStep, &stepsLeft.emplace_back(StepsPerOperation));
    sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, LongestValue);
    return SQLITE_OK;
}

using AutoExtension = void (*)();

} // namespace

BoundedConnections::BoundedConnections()
{
    PadPages();
    sqlite3_auto_extension(reinterpret_cast<AutoExtension>(Bound));
}

BoundedConnections::~BoundedConnections()
{
    sqlite3_cancel_auto_extension(reinterpret_cast<AutoExtension>(Bound));
    stepsLeft.clear();
}

void BoundedConnections::BeginOperation()
{
    std::fill(stepsLeft.begin(), stepsLeft.end(), StepsPerOperation);
    sqlite3_test_control(SQLITE_TESTCTRL_PRNG_SEED, RandomSeed, nullptr);
}

} // namespace Morvik::sql::tests
