#include "device_log/StopSignals.h"

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace examples {

StopSignals::StopSignals() : m_signals(), m_previous()
{
    sigemptyset(&m_signals);
    sigaddset(&m_signals, SIGINT);
    sigaddset(&m_signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &m_signals, &m_previous);
}

StopSignals::~StopSignals()
{
    sigprocmask(SIG_SETMASK, &m_previous, nullptr);
}

int StopSignals::WaitUntil(std::chrono::steady_clock::time_point time) const
{
    using namespace std::chrono;
    while (true) {
        const nanoseconds left = std::max<nanoseconds>(time - steady_clock::now(), nanoseconds::zero());
        timespec timeout = {};
        timeout.tv_sec = static_cast<time_t>(duration_cast<seconds>(left).count());
        timeout.tv_nsec = static_cast<decltype(timeout.tv_nsec)>((left % seconds(1)).count());
        const int signal = sigtimedwait(&m_signals, nullptr, &timeout);
        if (signal > 0) {
            return signal;
        }
        if (errno != EINTR) { // a signal that was not waited for, such as the one that continues a stopped program
            return 0;
        }
    }
}

} // namespace examples
