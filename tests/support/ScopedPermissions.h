#pragma once

#include <filesystem>

namespace Morvik::sql::tests {

/// Gives a file or directory other permissions for the life of the object. They bind root too: a process that runs as
/// root is an ordinary user meanwhile, so everything above `path` must be open to everybody (OpenToEverybody).
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

/// Everybody may read a file; everybody may enter and list a directory. Nobody may write.
inline constexpr std::filesystem::perms ReadableFile{0444};
inline constexpr std::filesystem::perms ReadableDirectory{0555};

/// Lets everybody enter and list `directory`, and its owner change it.
void OpenToEverybody(const std::filesystem::path& directory);

} // namespace Morvik::sql::tests
