#pragma once

#include <type_traits>

#include "contenders/Library.h"
#include "contenders/LibraryPrepared.h"
#include "contenders/RawSqlite.h"

#if TKOSQLLITE_BENCH_SQLITECPP
#include "contenders/SqliteCpp.h"
#endif
#if TKOSQLLITE_BENCH_SOCI
#include "contenders/Soci.h"
#endif
#if TKOSQLLITE_BENCH_POCO
#include "contenders/Poco.h"
#endif

namespace Morvik::sql::bench {

/// The contenders for the jobs that write and open databases. RawSqliteColumns is not one of them, because it differs
/// from the reference only in how it reads.
template <typename Contender>
concept Writer = !std::is_same_v<Contender, RawSqliteColumns>;

/// Calls `action.operator()<Contender>()` for every contender of this build.
void ForEachContender(auto action)
{
    action.template operator()<Library>();
    action.template operator()<LibraryPrepared>();
    action.template operator()<RawSqlite>();
    action.template operator()<RawSqlitePrepared>();
    action.template operator()<RawSqliteColumns>();
    action.template operator()<RawSqliteNoMutex>();
#if TKOSQLLITE_BENCH_SQLITECPP
    action.template operator()<SqliteCpp>();
#endif
#if TKOSQLLITE_BENCH_SOCI
    action.template operator()<Soci>();
#endif
#if TKOSQLLITE_BENCH_POCO
    action.template operator()<Poco>();
#endif
}

} // namespace Morvik::sql::bench
