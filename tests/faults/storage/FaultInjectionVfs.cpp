#include "faults/storage/FaultInjectionVfs.h"

namespace Morvik::sql::tests {

std::string Described(const FileFault& fault)
{
    static constexpr const char* Names[] = {"open",   "read", "write",  "truncate", "sync", "size",       "delete",
                                            "access", "lock", "unlock", "locked",   "map",  "shared lock"};
    return std::string(Names[static_cast<int>(fault.call)]) + ' ' + std::to_string(fault.position) +
           (fault.lasting ? " and later" : "") + (fault.carriedOut ? ", carried out," : "") + " with code " +
           std::to_string(fault.code);
}

void FaultInjectionVfs::Arm(const FileFault& fault)
{
    m_fault = fault;
    m_armed = true;
    m_calls = 0;
    m_fired = 0;
}

FileFailure FaultInjectionVfs::Fails(FileCall call)
{
    if (!m_armed || call != m_fault.call) {
        return {};
    }
    ++m_calls;
    if (m_calls < m_fault.position || (m_calls > m_fault.position && !m_fault.lasting)) {
        return {};
    }
    ++m_fired;
    return {m_fault.code, m_fault.carriedOut};
}

} // namespace Morvik::sql::tests
