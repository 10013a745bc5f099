#pragma once

#include <string>

namespace examples {

/// One package as dpkg knows it.
struct Package {
    std::string name;
    std::string architecture;
    std::string version;
    std::string section;

    /// "installed", or what else has become of it: a removed package whose configuration was left is "config-files".
    std::string state;

    /// The estimate of its packager in KiB; 0 where there is none.
    long long installedSize = 0;

    /// The first line is a summary; every line after it begins with a blank.
    std::string description;
};

} // namespace examples
