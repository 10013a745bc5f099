#include "fuzz/ComparedFacades.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>

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

constexpr int Padding = 256;

sqlite3_pcache_methods2 original;
std::map<sqlite3_pcache*, int> pageSizes;

// Adds zeroes after every page that SQLite holds in memory. A damaged page may make SQLite read a few bytes past its
// end. Without the zeroes, SQLite's own pointers are there, and two connections to the same file would read different
// bytes. This must happen before the first connection is opened.
void PadPages()
{
    if (original.xCreate != nullptr) {
        return;
    }
    int code = sqlite3_config(SQLITE_CONFIG_GETPCACHE2, &original);
    sqlite3_pcache_methods2 padded = original;
    padded.xCreate = [](int pageSize, int extraSize, int purgeable) {
        sqlite3_pcache* const cache = original.xCreate(pageSize + Padding, extraSize, purgeable);
        pageSizes[cache] = pageSize;
        return cache;
    };
    padded.xDestroy = [](sqlite3_pcache* cache) {
        pageSizes.erase(cache);
        original.xDestroy(cache);
    };
    padded.xFetch = [](sqlite3_pcache* cache, unsigned int key, int create) {
        sqlite3_pcache_page* const page = original.xFetch(cache, key, create);
        if (page != nullptr) {
            std::memset(static_cast<char*>(page->pBuf) + pageSizes.at(cache), 0, Padding);
        }
        return page;
    };
    if (code == SQLITE_OK) {
        code = sqlite3_config(SQLITE_CONFIG_PCACHE2, &padded);
    }
    RequireSame("The code of sqlite3_config", std::to_string(code), "0");
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
