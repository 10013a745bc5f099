#pragma once

#include <filesystem>

namespace Morvik::sql::tests {

/// Makes a directory the working directory during the lifetime of the object, for tests that need a file name without a
/// directory.
class ScopedWorkingDirectory {
public:
    explicit ScopedWorkingDirectory(const std::filesystem::path& directory)
    {
        std::filesystem::current_path(directory);
    }
    ~ScopedWorkingDirectory()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_previous, ignored);
    }

    ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
    ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;

private:
    const std::filesystem::path m_previous = std::filesystem::current_path();
};

} // namespace Morvik::sql::tests
