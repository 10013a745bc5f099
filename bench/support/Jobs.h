#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace Morvik::sql::bench {

/// How one contender does a job. Only `run` is timed. `prepare` is called before every run. `check` ends the program if
/// the result of the last run is wrong.
struct Task {
    std::function<void()> prepare;
    std::function<void()> run;
    std::function<void()> check;
};

/// The jobs of the benchmark. In every round, the contenders of a job run one after the other, so that a change of the
/// machine's load affects all of them. Their order rotates from round to round.
class Jobs {
public:
    /// Leaves out jobs on more than `largest` rows.
    explicit Jobs(int largest) : m_largest(largest) {}

    /// Adds a contender to the job `job` on `rows` rows. One measurement is `repeats` runs. `start` creates the task;
    /// it is called before the first round of the job, and the task is destroyed after the last round.
    void Add(const std::string& job, int rows, int repeats, const std::string& contender, std::function<Task()> start);

    /// Does every job once without measuring and then in `rounds` measured rounds. Writes the times as a JSON object:
    /// for each "job/rows" and contender, a list with one number per round, the nanoseconds of processor time per run.
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

/// How often to repeat a job on `rows` rows so that a measurement lasts some milliseconds.
int RepeatsFor(int rows);

/// Each function is in the file of its jobs.
void AddGrowth(Jobs& jobs);
void AddOpening(Jobs& jobs);
void AddReading(Jobs& jobs);
void AddWriting(Jobs& jobs);

} // namespace Morvik::sql::bench
