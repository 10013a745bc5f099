#include <sqlite3.h>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT id, name, weight, picture FROM t WHERE name <> '' ORDER BY name, id";
const std::string OtherQuery = "SELECT name FROM room ORDER BY 1 DESC";
const std::string Malformed = "SELECT nothing_of_that_name FROM t";
const std::string Overflow = "SELECT abs(-9223372036854775807 - 1)";
const std::string Conversions = "SELECT substr(name, 2), 4294967296 + id, 2.5 * id, upper(name) FROM t WHERE id < 3";

// Only the code distinguishes the end of the rows from a failed step. A failed step has the generic code; closing
// returns the specific one.
Report CloseAfterTheLastRow(const SqlTable& cursor)
{
    const bool ended = cursor.GetLastError() == SQLITE_OK;
    const bool closed = cursor.Close();
    return ReportOf(ended && closed, cursor);
}

Report Construct(Subject& subject)
{
    subject.cursor.emplace(*subject.connection);
    return ReportOf(true, *subject.cursor);
}

Report Walk(Subject& subject)
{
    static const std::string Name = "name";
    static const std::string Absent = "Name";
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Query)) {
        return ReportOf(false, cursor);
    }
    while (cursor.ReadNext()) {
        subject.integer += cursor.GetInt64(0) + cursor.GetInteger(0) + cursor.Columns();
        subject.text += cursor.GetText(1);
        subject.otherText += cursor[Name].GetValue<std::string>();
        subject.real += cursor[2].GetValue<double>();
        const int length = cursor.GetLength(3);
        if (const auto* const picture = static_cast<const char*>(cursor.GetBlob(3)); picture != nullptr) {
            subject.bytes.insert(subject.bytes.end(), picture, picture + length);
        }
        subject.result += cursor[Absent].GetValueType();
    }
    return CloseAfterTheLastRow(cursor);
}

Report OpenAgain(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    const bool read = cursor.Open(Query) && cursor.ReadNext() && cursor.Open(OtherQuery) && cursor.ReadNext() &&
                      cursor.Columns() == 1;
    if (read) {
        subject.text = cursor.GetText(0);
    }
    return ReportOf(read, cursor);
}

Report OpenMalformed(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    const bool opened = cursor.Open(Malformed);
    return ReportOf(!opened && cursor.GetLastError() == SQLITE_ERROR && !cursor.IsOpen(), cursor);
}

Report FailStep(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Overflow)) {
        return ReportOf(false, cursor);
    }
    const bool stepped = cursor.ReadNext();
    const bool rewound = cursor.Reset();
    const bool failedAgain = !cursor.ReadNext() && !cursor.Close();
    return ReportOf(!stepped && !rewound && failedAgain && cursor.GetLastError() == SQLITE_ERROR, cursor);
}

Report ReadConverted(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Conversions)) {
        return ReportOf(false, cursor);
    }
    while (cursor.ReadNext()) {
        for (int column = 0; column < cursor.Columns(); ++column) {
            subject.text += cursor.GetText(column);
        }
    }
    return CloseAfterTheLastRow(cursor);
}

void ArrangeRow(Subject& subject)
{
    MakeCursor(subject);
    subject.cursor->Open(Query);
    subject.cursor->ReadNext();
}

Report Move(Subject& subject)
{
    NoDestructor<SqlTable> taken(*subject.connection);
    *taken = std::move(*subject.cursor);
    *subject.cursor = std::move(*taken);
    return ReportOf(subject.cursor->IsOpen(), *subject.cursor);
}

Report DestroyOpen(Subject& subject)
{
    const SqlTable cursor(*subject.connection);
    return ReportOf(cursor.Open(Query) && cursor.ReadNext(), cursor);
}

} // namespace

std::vector<Scenario> CursorScenarios()
{
    return {
        {.name = "ConstructCursor", .arrange = OpenConnection, .act = Construct, .least = {0, 1}},
        {.name = "WalkCursor", .arrange = MakeCursor, .act = Walk, .least = {20, 3}},
        {.name = "OpenCursorAgain",
         .arrange = MakeWarmCursor,
         .act = OpenAgain,
         .least = {20, 0},
         .refusalsForSqlite = FailedStep},
        {.name = "OpenCursorOnMalformedText", .arrange = MakeWarmCursor, .act = OpenMalformed, .least = {5, 1}},
        {.name = "FailCursorStep", .arrange = MakeCursor, .act = FailStep, .least = {5, 1}},
        {.name = "ReadConvertedFromCursor",
         .arrange = MakeWarmCursor,
         .act = ReadConverted,
         .least = {20, 3},
         .convertsText = true},
        {.name = "MoveCursor", .arrange = ArrangeRow, .act = Move, .least = {0, 1}},
        {.name = "DestroyOpenCursor",
         .arrange = MakeWarmCursor,
         .act = DestroyOpen,
         .least = {10, 1},
         .refusalsForSqlite = FailedStep},
    };
}

} // namespace Morvik::sql::tests
