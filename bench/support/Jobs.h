#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace Morvik::sql::bench {

/// One contender's way to do a job. Only `run` is timed. `prepare` is called before every run. `check` ends the program
/// if the result of the last run is wrong.
struct Task {
    std::function<void()> prepare;
    std::function<void()> run;
    std::function<void()> check;
};

/// The jobs of the benchmark. The contenders of a job run one after the other in every round, so that a change of the
/// machine's load meets all of them; the order rotates from round to round.
class Jobs {
public:
    /// Leaves out jobs on more than `largest` rows.
    explicit Jobs(int largest) : m_largest(largest) {}

    /// Adds a contender to the job `job` on `rows` rows. `repeats` runs make one measurement. `start` makes what the
    /// task needs; it is called before the first round of the job, and the task is dropped after the last one.
    void Add(const std::string& job, int rows, int repeats, const std::string& contender, std::function<Task()> start);

    /// Does every job once, unmeasured, and in `rounds` measured rounds, and writes a JSON object of the times: for
    /// each "job/rows" and contender a list of nanoseconds of processor time per run, one for each round.
    void Run(int rounds, std::FILE* output) const;

private:
    struct Entry {
        std::string contender;
        std::function<Task()> start;
    };

    struct Job {
        std::string name;
        int repeats;
        std::vector<Entry> entries;

        void Run(int rounds, std::FILE* output) const;
    };

    int m_largest;
    std::vector<Job> m_jobs;
};

/// How often to repeat a job on that many rows for a measurement to last some milliseconds.
int RepeatsFor(int rows);

/// Each file of jobs has one such function.
void AddBinding(Jobs& jobs);
void AddGrowth(Jobs& jobs);
void AddOpening(Jobs& jobs);
void AddReading(Jobs& jobs);
void AddWriting(Jobs& jobs);

} // namespace Morvik::sql::bench
