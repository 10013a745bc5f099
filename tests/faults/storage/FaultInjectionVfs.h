#pragma once

#include <string>

#include "faults/storage/VfsShim.h"

namespace Morvik::sql::tests {

/// A call that fails: the call at `position`, counted from 1 among the calls of its kind. With `lasting`, every later
/// call of the same kind fails too. The code is SQLite's extended code if there is one; with code 0, no call fails.
struct FileFault {
    FileCall call = FileCall::Open;
    int code = 0;
    int position = 1;
    bool lasting = false;
    bool carriedOut = false;
};

/// Describes the fault, for a message.
inline std::string Described(const FileFault& fault)
{
    static constexpr const char* Names[] = {"open",   "read", "write",  "truncate", "sync", "size",       "delete",
                                            "access", "lock", "unlock", "locked",   "map",  "shared lock"};
    return std::string(Names[static_cast<int>(fault.call)]) + ' ' + std::to_string(fault.position) +
           (fault.lasting ? " and later" : "") + (fault.carriedOut ? ", carried out," : "") + " with code " +
           std::to_string(fault.code);
}

/// A file system in which calls fail.
class FaultInjectionVfs : public VfsShim {
public:
    /// From now on, counts the calls and makes them fail as `fault` says.
    void Arm(const FileFault& fault)
    {
        m_fault = fault;
        m_calls = 0;
        m_fired = 0;
    }

    /// The number of calls that failed.
    int Fired() const { return m_fired; }

    FileFailure Fails(FileCall call) override
    {
        if (call != m_fault.call || ++m_calls < m_fault.position || (m_calls > m_fault.position && !m_fault.lasting)) {
            return {};
        }
        ++m_fired;
        return {m_fault.code, m_fault.carriedOut};
    }

private:
    FileFault m_fault;
    int m_calls = 0;
    int m_fired = 0;
};

} // namespace Morvik::sql::tests
