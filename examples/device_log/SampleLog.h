#pragma once

#include <string>

#include "common/OwnDatabase.h"
#include "device_log/Machine.h"

namespace examples {

/// The log: one table of samples, of which only the last ones are kept, in a database file of its own.
class SampleLog {
public:
    /// Opens the log at `path`, or begins a new one, that keeps the last `keep` samples.
    SampleLog(const std::string& path, int keep);

    /// Adds a sample under the present time and drops those that are too many, in one transaction: a log that is looked
    /// at meanwhile, or whose writer is killed, never holds more samples than are to be kept.
    void Add(const Sample& sample);

    /// How many samples there are.
    int Size();

    /// For the questions of a report; the table is "sample".
    OwnDatabase& Database() { return m_database; }

private:
    OwnDatabase m_database;
    int m_keep;
};

} // namespace examples
