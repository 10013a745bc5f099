#pragma once

#include <filesystem>

namespace Morvik::sql::tests {

/// Makes a directory the working directory for the life of the object, for tests that cannot do without a bare name.
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
