#pragma once

#include <filesystem>
#include <stdexcept>
#include <utility>

#include <sys/prctl.h>
#include <unistd.h>

namespace Morvik::sql::tests {

/// All users may read a file, and enter and list a directory. No user may write.
inline constexpr std::filesystem::perms ReadableFile{0444};
inline constexpr std::filesystem::perms ReadableDirectory{0555};

/// All users may enter and list `directory`, and its owner may change it.
inline void OpenToEverybody(const std::filesystem::path& directory)
{
    std::filesystem::permissions(directory, ReadableDirectory | std::filesystem::perms::owner_write);
}

/// Gives a file or directory other permissions during the lifetime of the object. They also apply to root: a process
/// that runs as root becomes an ordinary user for that time, so every directory above `path` must be open to all users
/// (OpenToEverybody).
class ScopedPermissions {
public:
    ScopedPermissions(std::filesystem::path path, std::filesystem::perms permissions) : m_path(std::move(path))
    {
        std::filesystem::permissions(m_path, permissions);
        if (m_root && seteuid(Nobody) != 0) {
            throw std::runtime_error("root's privileges cannot be dropped");
        }
    }

    ~ScopedPermissions()
    {
        if (m_root && seteuid(Root) == 0) {
            prctl(PR_SET_DUMPABLE, 1); // changing the user cleared this flag, which the leak checker needs
        }
        std::error_code ignored;
        std::filesystem::permissions(m_path, m_previous, ignored);
    }

    ScopedPermissions(const ScopedPermissions&) = delete;
    ScopedPermissions& operator=(const ScopedPermissions&) = delete;

private:
    static constexpr uid_t Root = 0;
    static constexpr uid_t Nobody = 65534;

    const std::filesystem::path m_path;
    const std::filesystem::perms m_previous = std::filesystem::status(m_path).permissions();
    const bool m_root = geteuid() == Root;
};

} // namespace Morvik::sql::tests
