#include "fuzz/PaddedPages.h"

#include <sqlite3.h>

#include <cstring>
#include <map>

#include "fuzz/Finding.h"

namespace Morvik::sql::tests {

namespace {

constexpr int Padding = 256;

sqlite3_pcache_methods2 original;
std::map<sqlite3_pcache*, int> pageSizes;

sqlite3_pcache* Create(int pageSize, int extraSize, int purgeable)
{
    sqlite3_pcache* const cache = original.xCreate(pageSize + Padding, extraSize, purgeable);
    pageSizes[cache] = pageSize;
    return cache;
}

void Destroy(sqlite3_pcache* cache)
{
    pageSizes.erase(cache);
    original.xDestroy(cache);
}

sqlite3_pcache_page* Fetch(sqlite3_pcache* cache, unsigned int key, int create)
{
    sqlite3_pcache_page* const page = original.xFetch(cache, key, create);
    if (page != nullptr) {
        std::memset(static_cast<char*>(page->pBuf) + pageSizes.at(cache), 0, Padding);
    }
    return page;
}

} // namespace

void PadPages()
{
    if (original.xCreate != nullptr) {
        return;
    }
    int code = sqlite3_config(SQLITE_CONFIG_GETPCACHE2, &original);
    sqlite3_pcache_methods2 padded = original;
    padded.xCreate = Create;
    padded.xDestroy = Destroy;
    padded.xFetch = Fetch;
    if (code == SQLITE_OK) {
        code = sqlite3_config(SQLITE_CONFIG_PCACHE2, &padded);
    }
    RequireSame("The code of sqlite3_config", std::to_string(code), "0");
}

} // namespace Morvik::sql::tests
