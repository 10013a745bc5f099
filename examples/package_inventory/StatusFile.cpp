#include "package_inventory/StatusFile.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "common/Failure.h"

namespace examples {

namespace {

constexpr std::string_view Blanks = " \t\r";
constexpr std::string_view NotInstalled = "not-installed";
constexpr std::array States = {NotInstalled,
                               std::string_view("config-files"),
                               std::string_view("half-installed"),
                               std::string_view("unpacked"),
                               std::string_view("half-configured"),
                               std::string_view("triggers-awaited"),
                               std::string_view("triggers-pending"),
                               std::string_view("installed")};

struct IgnoringCase {
    bool operator()(const std::string& left, const std::string& right) const
    {
        return strcasecmp(left.c_str(), right.c_str()) < 0;
    }
};

using Fields = std::map<std::string, std::string, IgnoringCase>;

// A zero byte ends the reading at once: no status file has one, and devices like /dev/zero have nothing else.
std::string Content(const std::string& path)
{
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string content;
    std::array<char, 65536> block{};
    while (file.read(block.data(), block.size()) || file.gcount() > 0) {
        content.append(block.data(), static_cast<std::size_t>(file.gcount()));
        if (content.find('\0', content.size() - static_cast<std::size_t>(file.gcount())) != std::string::npos) {
            throw Failure("malformed status file " + path + ": it holds a zero byte");
        }
    }
    if (!file.eof()) {
        throw Failure("cannot read " + path + ": " + std::generic_category().message(errno != 0 ? errno : EIO));
    }
    return content;
}

std::string_view WithoutLeadingBlanks(std::string_view text)
{
    return text.substr(std::min(text.find_first_not_of(Blanks), text.size()));
}

std::string_view WithoutTrailingBlanks(std::string_view text)
{
    return text.substr(0, text.find_last_not_of(Blanks) + 1);
}

// Reads paragraph by paragraph: lines of "Name: value", continued by lines that begin with a blank, up to an empty
// line.
class Reader {
public:
    explicit Reader(std::string path) : m_path(std::move(path)), m_lines(Content(m_path)) {}

    std::vector<Package> Packages()
    {
        std::string line;
        while (std::getline(m_lines, line)) {
            ++m_line;
            if (line.empty()) {
                EndParagraph();
            } else if (Blanks.find(line.front()) != std::string_view::npos) {
                Continue(line);
            } else {
                BeginField(line);
            }
        }
        EndParagraph();
        if (m_packages.empty()) {
            throw Failure("no packages in " + m_path);
        }
        return std::move(m_packages);
    }

private:
    [[noreturn]] void Reject(const std::string& why) const
    {
        throw Failure("malformed status file " + m_path + ", line " + std::to_string(m_line) + ": " + why);
    }

    void BeginField(const std::string& line)
    {
        const std::size_t colon = line.find(':');
        const std::string name = line.substr(0, colon);
        if (colon == std::string::npos || name.empty() || name.find_first_of(Blanks) != std::string::npos) {
            Reject("a field begins with its name and a colon");
        }
        const auto [field, isNew] =
            m_fields.emplace(name, WithoutLeadingBlanks(std::string_view(line).substr(colon + 1)));
        if (!isNew) {
            Reject("a second " + name + " of the same package");
        }
        m_field = field;
    }

    void Continue(const std::string& line)
    {
        if (m_fields.empty()) {
            Reject("this line continues no field");
        }
        if (WithoutLeadingBlanks(line).empty()) {
            Reject("a blank line within a field");
        }
        m_field->second += '\n' + line;
    }

    // The value of a field, empty where the paragraph has none.
    std::string Value(const std::string& name) const
    {
        const auto field = m_fields.find(name);
        return std::string(field != m_fields.end() ? WithoutTrailingBlanks(field->second) : std::string_view());
    }

    std::string Required(const std::string& name) const
    {
        std::string value = Value(name);
        if (value.empty()) {
            Reject("a package without the field " + name);
        }
        return value;
    }

    // "install ok installed": what is wanted, whether something is wrong, and the state.
    std::string State() const
    {
        std::istringstream words(Required("Status"));
        std::string wanted;
        std::string flag;
        std::string state;
        std::string rest;
        if (!(words >> wanted >> flag >> state) || words >> rest || std::ranges::find(States, state) == States.end()) {
            Reject("\"" + Value("Status") + "\" is no status of a package");
        }
        return state;
    }

    long long InstalledSize() const
    {
        const std::string text = Value("Installed-Size");
        long long size = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
        if (!text.empty() && (error != std::errc() || end != text.data() + text.size() || size < 0)) {
            Reject("\"" + text + "\" is no installed size");
        }
        return size;
    }

    void EndParagraph()
    {
        if (m_fields.empty()) {
            return;
        }
        Package package;
        package.name = Required("Package");
        package.state = State();
        if (package.state != NotInstalled) {
            package.version = Required("Version");
            package.architecture = Value("Architecture");
            package.section = Value("Section");
            package.installedSize = InstalledSize();
            package.description = Value("Description");
            if (!m_seen.emplace(package.name, package.architecture).second) {
                Reject("a second package " + package.name);
            }
            m_packages.push_back(std::move(package));
        }
        m_fields.clear();
    }

    std::string m_path;
    std::istringstream m_lines;
    std::size_t m_line = 0;
    Fields m_fields;
    Fields::iterator m_field;
    std::set<std::pair<std::string, std::string>> m_seen;
    std::vector<Package> m_packages;
};

} // namespace

std::vector<Package> ReadStatusFile(const std::string& path)
{
    return Reader(path).Packages();
}

} // namespace examples
