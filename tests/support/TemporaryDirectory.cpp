#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <stdexcept>

namespace Morvik::sql::tests {

TemporaryDirectory::TemporaryDirectory()
{
    std::string name = (std::filesystem::temp_directory_path() / "tkosqllite-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary directory can be made at " + name);
    }
    m_path = name;
}

TemporaryDirectory::~TemporaryDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

ScopedWorkingDirectory::ScopedWorkingDirectory(const std::filesystem::path& path)
{
    std::filesystem::current_path(path);
}

ScopedWorkingDirectory::~ScopedWorkingDirectory()
{
    std::error_code ignored;
    std::filesystem::current_path(m_previous, ignored);
}

} // namespace Morvik::sql::tests
