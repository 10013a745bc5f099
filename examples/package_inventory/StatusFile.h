#pragma once

#include <string>
#include <vector>

#include "package_inventory/Package.h"

namespace examples {

/// The packages in the dpkg status file `path`: exactly those that `dpkg-query -W` lists, which are all but the ones
/// that are not installed and have left nothing behind.
///
/// Throws Failure, naming the line where that helps, if the file cannot be read, is malformed or holds no package.
std::vector<Package> ReadStatusFile(const std::string& path);

} // namespace examples
