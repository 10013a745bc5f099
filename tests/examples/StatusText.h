#pragma once

#include <fstream>
#include <string>

namespace Morvik::sql::tests {

/// A paragraph of a dpkg status file.
struct StatusEntry {
    std::string name;
    std::string version = "1.0";
    std::string size = "10";
    std::string description = "something";
    std::string status = "install ok installed";
    std::string section = "misc";

    std::string Text() const
    {
        return "Package: " + name + "\nStatus: " + status +
               "\nMaintainer: Nobody <nobody@localhost>\nSection: " + section + "\nInstalled-Size: " + size +
               "\nArchitecture: all\nVersion: " + version + "\nDescription: " + description + "\n\n";
    }
};

/// `count` packages from "p0" on, large enough together that writing them takes a while.
inline std::string ManyPackages(int count, const std::string& version)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        StatusEntry entry{"p" + std::to_string(i), version, std::to_string(i % 997)};
        for (int line = 0; line < 12; ++line) {
            entry.description += "\n the package's \"" + std::to_string(i) + "\" line – describing it at some length";
        }
        text += entry.Text();
    }
    return text;
}

inline void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

} // namespace Morvik::sql::tests
