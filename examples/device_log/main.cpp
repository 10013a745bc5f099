// Logs this machine's load, memory, disk and uptime at an interval, as a small device would, and shows the last
// samples.

#include <getopt.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <limits>
#include <optional>
#include <string>

#include "common/Failure.h"
#include "common/Program.h"
#include "device_log/Chart.h"
#include "device_log/Machine.h"
#include "device_log/SampleLog.h"
#include "device_log/StopSignals.h"

namespace {

using namespace examples;

const std::string Usage = R"(Usage: device_log [OPTION]...

Samples this machine's load, memory, disk and uptime at an interval, keeps the
last samples in an SQLite database and shows them. SIGINT (Ctrl-C) and SIGTERM
end it early; what was sampled until then is kept.

  --minutes N       how long to sample, in minutes (1); fractions are fine
  --samples N       how many samples to take, whatever the minutes
  --interval N      seconds from one sample to the next (5); fractions are fine
  --keep N          how many samples the log keeps (1000)
  --database PATH   the database (by default
                    ~/.local/share/device_log/device_log.db);
                    missing directories are created
  --help            this text
)";

struct Options {
    double minutes = 1;
    double interval = 5;
    std::optional<int> samples{};
    int keep = 1000;
    std::string database{};
    bool help = false;
};

Options OptionsOf(int argc, char** argv)
{
    static const std::array<option, 7> Known = {{{"minutes", required_argument, nullptr, 'm'},
                                                 {"samples", required_argument, nullptr, 's'},
                                                 {"interval", required_argument, nullptr, 'i'},
                                                 {"keep", required_argument, nullptr, 'k'},
                                                 {"database", required_argument, nullptr, 'd'},
                                                 {"help", no_argument, nullptr, 'h'},
                                                 {nullptr, 0, nullptr, 0}}};
    constexpr int Unlimited = std::numeric_limits<int>::max();
    Options options;
    opterr = 0;
    for (int name = 0; (name = getopt_long(argc, argv, ":", Known.data(), nullptr)) != -1;) {
        switch (name) {
        case 'm':
            options.minutes = Number("minutes", optarg, 0, 1e6);
            break;
        case 's':
            options.samples = WholeNumber("samples", optarg, 1, Unlimited);
            break;
        case 'i':
            options.interval = Number("interval", optarg, 0.01, 1e6);
            break;
        case 'k':
            options.keep = WholeNumber("keep", optarg, 1, Unlimited);
            break;
        case 'd':
            options.database = DatabasePath(optarg);
            break;
        case 'h':
            options.help = true;
            break;
        case ':':
            throw UsageFailure(std::string(argv[optind - 1]) + " needs a value");
        default:
            throw UsageFailure(std::string(argv[optind - 1]) + " is no option; try --help");
        }
    }
    if (optind < argc) {
        throw UsageFailure(std::string(argv[optind]) + " is no option; try --help");
    }
    return options;
}

// The first sample is taken at once, so a minute at an interval of 5 seconds gives 13.
int SamplesOf(const Options& options)
{
    const double samples = options.minutes * 60 / options.interval + 1;
    return options.samples.value_or(static_cast<int>(std::min(samples + 1e-6, 2e9)));
}

void Run(const Options& options)
{
    using namespace std::chrono;
    if (options.help) {
        std::cout << Usage;
        return;
    }
    const StopSignals signals;
    SampleLog log(options.database.empty() ? DefaultDatabasePath("device_log", "device_log.db") : options.database,
                  options.keep);
    const std::string directory = std::filesystem::absolute(log.Database().Path()).parent_path();

    const auto start = steady_clock::now();
    const int wanted = SamplesOf(options);
    int taken = 0;
    int signal = 0;
    while (taken < wanted && signal == 0) {
        log.Add(TakeSample(directory));
        ++taken;
        if (taken < wanted) {
            signal = signals.WaitUntil(start + duration_cast<nanoseconds>(taken * duration<double>(options.interval)));
        }
    }

    constexpr int Shown = 20;
    std::cout << taken << (taken == 1 ? " sample" : " samples") << " taken";
    if (signal != 0) {
        std::cout << ", then stopped by " << (signal == SIGINT ? "SIGINT" : "SIGTERM");
    }
    std::cout << "; " << log.Database().Path() << " holds " << log.Size() << '\n';
    PrintLastSamples(std::cout, log.Database(), Shown);
    log.Database().Close();
}

} // namespace

int main(int argc, char** argv)
{
    return RunProgram("device_log", [&] { Run(OptionsOf(argc, argv)); });
}
