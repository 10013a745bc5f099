#include "support/ScopedPermissions.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace Morvik::sql::tests {

namespace {

constexpr uid_t Root = 0;
constexpr uid_t Nobody = 65534;

} // namespace

ScopedPermissions::ScopedPermissions(std::filesystem::path path, std::filesystem::perms permissions)
    : m_path(std::move(path)), m_previous(std::filesystem::status(m_path).permissions()), m_root(geteuid() == Root)
{
    std::filesystem::permissions(m_path, permissions);
    if (m_root && seteuid(Nobody) != 0) {
        throw std::runtime_error("root's privileges cannot be dropped");
    }
}

ScopedPermissions::~ScopedPermissions()
{
    if (m_root && seteuid(Root) == 0) {
        prctl(PR_SET_DUMPABLE, 1); // changing the user cleared this flag, which the leak checker needs
    }
    std::error_code ignored;
    std::filesystem::permissions(m_path, m_previous, ignored);
}

void OpenToEverybody(const std::filesystem::path& directory)
{
    std::filesystem::permissions(directory, ReadableDirectory | std::filesystem::perms::owner_write);
}

} // namespace Morvik::sql::tests
