#pragma once

#include <benchmark/benchmark.h>

namespace Morvik::sql::bench {

/// Times `action` in a transaction that is rolled back, so that every round finds the same database; the last one is
/// kept.
template <typename Contender, typename Action>
void InTransactions(benchmark::State& state, Contender& contender, Action action)
{
    contender.Execute("BEGIN");
    for ([[maybe_unused]] auto round : state) {
        state.PauseTiming();
        contender.Execute("ROLLBACK");
        contender.Execute("BEGIN");
        state.ResumeTiming();
        action();
    }
    contender.Execute("COMMIT");
}

} // namespace Morvik::sql::bench
