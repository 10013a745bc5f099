#pragma once

#include <filesystem>

namespace Morvik::sql::tests {

/// Gives a file or directory other permissions during the lifetime of the object. They also apply to root: a process
/// that runs as root becomes an ordinary user for that time, so every directory above `path` must be open to all users
/// (OpenToEverybody).
class ScopedPermissions {
public:
    ScopedPermissions(std::filesystem::path path, std::filesystem::perms permissions);
    ~ScopedPermissions();

    ScopedPermissions(const ScopedPermissions&) = delete;
    ScopedPermissions& operator=(const ScopedPermissions&) = delete;

private:
    const std::filesystem::path m_path;
    const std::filesystem::perms m_previous;
    const bool m_root;
};

/// All users may read a file, and enter and list a directory. No user may write.
inline constexpr std::filesystem::perms ReadableFile{0444};
inline constexpr std::filesystem::perms ReadableDirectory{0555};

/// All users may enter and list `directory`, and its owner may change it.
void OpenToEverybody(const std::filesystem::path& directory);

} // namespace Morvik::sql::tests
