#pragma once

#include <string>

namespace examples {

/// What one look at the machine shows.
struct Sample {
    /// Processes running or waiting to run, on average over the last minute.
    double load = 0;

    /// Memory that programs could not have without taking it from others, and all there is, in MiB.
    int memoryUsed = 0;
    int memoryTotal = 0;

    /// How full the watched file system is, in percent, as df tells it.
    double diskUsed = 0;

    /// Seconds since the machine was started.
    int uptime = 0;
};

/// Looks at this machine, and at the file system that holds `directory`. Throws Failure if a figure cannot be had.
Sample TakeSample(const std::string& directory);

} // namespace examples
