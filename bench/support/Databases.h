#pragma once

#include "support/Require.h"
#include "support/Sample.h"
#include "support/TemporaryDirectory.h"

#include <string>
#include <vector>

namespace Morvik::sql::bench {

inline constexpr const char* InMemory = ":memory:";

/// The directory of every file of this program, removed at its end.
const tests::TemporaryDirectory& Directory();

/// A database file that holds SampleRows(count) as `sample`, made at the first call.
std::string FilledFile(int count);

/// Ends the program unless the database file holds exactly these rows as `sample`.
void RequireRows(const std::string& path, const std::vector<SampleRow>& rows);

/// Fills the contender's new database with SampleRows(count).
template <typename Contender>
void Fill(Contender& contender, int count)
{
    contender.Execute("ATTACH '" + FilledFile(count) + "' AS source");
    contender.Execute(CreateTable);
    contender.Execute("INSERT INTO main.sample SELECT * FROM source.sample");
    contender.Execute("DETACH source");
}

/// Ends the program unless the contender's database holds exactly these rows.
template <typename Contender>
void RequireWritten(Contender& contender, const std::vector<SampleRow>& rows)
{
    const tests::TemporaryDirectory directory;
    const std::string copy = directory.File("copy.db");
    contender.Execute("VACUUM INTO '" + copy + "'");
    RequireRows(copy, rows);
}

} // namespace Morvik::sql::bench
