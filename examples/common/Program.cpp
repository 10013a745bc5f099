#include "common/Program.h"

#include <charconv>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <system_error>

#include "common/Failure.h"
#include "common/TextTable.h"

namespace examples {

namespace {

// A path or an SQLite message may hold a line break; the failure is one line all the same.
int Fail(const std::string& name, const std::exception& failure, int status)
{
    std::cerr << name + ": " + Printable(failure.what()) + "\n";
    return status;
}

[[noreturn]] void RejectNumber(std::string_view option, std::string_view text, const std::string& range)
{
    throw UsageFailure("--" + std::string(option) + " takes " + range + ", not \"" + std::string(text) + "\"");
}

} // namespace

int RunProgram(const std::string& name, const std::function<void()>& body)
{
    // A write beyond the file size limit of the process is to fail like one on a full disk, not to kill the program.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        body();
        if (!std::cout.flush()) {
            throw Failure("cannot write the report to standard output");
        }
        return EXIT_SUCCESS;
    } catch (const UsageFailure& failure) {
        return Fail(name, failure, 2);
    } catch (const std::exception& failure) {
        return Fail(name, failure, EXIT_FAILURE);
    }
}

std::string DefaultDatabasePath(const std::string& name, const std::string& file)
{
    const auto below = [&](const std::string& directory) { return directory + "/" + name + "/" + file; };
    if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data == '/') {
        return below(data);
    }
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return below(std::string(home) + "/.local/share");
    }
    throw UsageFailure("there is no home directory to keep " + file + " in; say where with --database PATH");
}

std::string DatabasePath(const std::string& text)
{
    if (text.empty()) {
        throw UsageFailure("--database needs the path of a file");
    }
    return text;
}

int WholeNumber(std::string_view option, std::string_view text, int smallest, int largest)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < smallest || number > largest) {
        RejectNumber(option, text,
                     "a whole number from " + std::to_string(smallest) + " to " + std::to_string(largest));
    }
    return number;
}

double Number(std::string_view option, const std::string& text, double smallest, double largest)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    if (!whole || !(number >= smallest && number <= largest)) {
        RejectNumber(option, text, "a number from " + Shown(smallest) + " to " + Shown(largest));
    }
    return number;
}

} // namespace examples
