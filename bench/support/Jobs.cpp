#include "support/Jobs.h"

#include <algorithm>
#include <cstddef>

#include <time.h>

namespace Morvik::sql::bench {

namespace {

double ProcessorNanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double Measure(const Task& task, int repeats)
{
    double total = 0.0;
    for (int i = 0; i < repeats; ++i) {
        task.prepare();
        const double start = ProcessorNanoseconds();
        task.run();
        total += ProcessorNanoseconds() - start;
    }
    return total / repeats;
}

} // namespace

int RepeatsFor(int rows)
{
    return std::max(1, 10'000 / rows);
}

void Jobs::Add(const std::string& job, int rows, int repeats, const std::string& contender, std::function<Task()> start)
{
    if (rows > m_largest) {
        return;
    }
    const std::string name = job + '/' + std::to_string(rows);
    auto found = std::find_if(m_jobs.begin(), m_jobs.end(), [&](const Job& known) { return known.name == name; });
    if (found == m_jobs.end()) {
        found = m_jobs.insert(m_jobs.end(), {name, repeats, {}});
    }
    found->entries.push_back({contender, std::move(start)});
}

void Jobs::Run(int rounds, std::FILE* output) const
{
    const char* separator = "{\n";
    for (const Job& job : m_jobs) {
        std::fprintf(stderr, "%s\n", job.name.c_str());
        std::fprintf(output, "%s  \"%s\": {", separator, job.name.c_str());
        job.Run(rounds, output);
        std::fprintf(output, "}");
        separator = ",\n";
    }
    std::fprintf(output, "\n}");
}

void Jobs::Job::Run(int rounds, std::FILE* output) const
{
    std::vector<Task> tasks;
    for (const Entry& entry : entries) {
        tasks.push_back(entry.start());
        Measure(tasks.back(), 1);
        tasks.back().check();
    }
    std::vector<std::vector<double>> times(tasks.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < tasks.size(); ++i) {
            const std::size_t next = (i + static_cast<std::size_t>(round)) % tasks.size();
            times[next].push_back(Measure(tasks[next], repeats));
        }
    }
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        if (rounds > 0) {
            tasks[i].check();
        }
        std::fprintf(output, "%s\n    \"%s\": [", i == 0 ? "" : ",", entries[i].contender.c_str());
        for (std::size_t round = 0; round < times[i].size(); ++round) {
            std::fprintf(output, "%s%.0f", round == 0 ? "" : ", ", times[i][round]);
        }
        std::fprintf(output, "]");
    }
}

} // namespace Morvik::sql::bench
