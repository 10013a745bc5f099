#pragma once

#include <chrono>
#include <csignal>

namespace examples {

/// Holds SIGINT and SIGTERM back while the object lives, so that they never interrupt a write: they are noticed only by
/// WaitUntil().
class StopSignals {
public:
    StopSignals();
    ~StopSignals();

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Waits until `time`. Returns 0 then, or at once the number of the signal that asks the program to stop.
    int WaitUntil(std::chrono::steady_clock::time_point time) const;

private:
    sigset_t m_signals;
    sigset_t m_previous;
};

} // namespace examples
