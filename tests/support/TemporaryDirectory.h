#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace Morvik::sql::tests {

/// A new, separate directory for one test; it is removed with all its files when the object is destroyed.
class TemporaryDirectory {
public:
    TemporaryDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "tkosqllite-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary directory can be made at " + name);
        }
        m_path = name;
    }

    ~TemporaryDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

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
    explicit ScopedWorkingDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }

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
