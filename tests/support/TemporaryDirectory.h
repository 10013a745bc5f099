#pragma once

#include <filesystem>
#include <string>

namespace Morvik::sql::tests {

/// A new, separate directory for one test; it is removed with all its files when the object is destroyed.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

    /// The path of `name` inside the directory.
    std::string File(const std::string& name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

/// Makes a directory the working directory during the lifetime of the object, for tests that need a file name without a
/// directory.
class ScopedWorkingDirectory {
public:
    explicit ScopedWorkingDirectory(const std::filesystem::path& path);
    ~ScopedWorkingDirectory();
    ScopedWorkingDirectory(const ScopedWorkingDirectory&) = delete;
    ScopedWorkingDirectory& operator=(const ScopedWorkingDirectory&) = delete;

private:
    const std::filesystem::path m_previous = std::filesystem::current_path();
};

} // namespace Morvik::sql::tests
