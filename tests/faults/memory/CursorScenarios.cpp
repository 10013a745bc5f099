// Cursors, and the values that they return.
#include <sqlite3.h>

#include <utility>

#include "Scenario.h"
#include "support/NoDestructor.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT id, name, weight, picture FROM t WHERE name <> '' ORDER BY name, id";
const std::string ValueQuery =
    "SELECT substr(name, 2), 4294967296, 2.5, zeroblob(4000), name, NULL FROM t WHERE id < 3";
const std::string OtherQuery = "SELECT name FROM room ORDER BY 1 DESC";
const std::string Malformed = "SELECT nothing_of_that_name FROM t";
const std::string Conversions = "SELECT substr(name, 2), 4294967296 + id, 2.5 * id, upper(name) FROM t WHERE id < 3";

template <typename T>
T Value(const SqlTable& cursor, int column)
{
    return cursor[column].GetValue<T>();
}

void ArrangeRow(Subject& subject)
{
    MakeCursor(subject);
    subject.cursor->Open(Query);
    subject.cursor->ReadNext();
}

Report Construct(Subject& subject)
{
    return ReportOf(true, subject.cursor.emplace(*subject.connection));
}

Report DestroyOpen(Subject& subject)
{
    const SqlTable cursor(*subject.connection);
    return ReportOf(cursor.Open(Query) && cursor.ReadNext(), cursor);
}

bool Walk(Subject& subject, SqlTable& cursor)
{
    static const std::string Name = "name";
    static const std::string Absent = "Name";
    return ReadRows(cursor, Query, [&] {
        subject.integer += cursor.GetInt64(0) + cursor.GetInteger(0) + cursor.Columns();
        subject.text += cursor.GetText(1);
        subject.otherText += cursor[Name].GetValue<std::string>();
        subject.real += Value<double>(cursor, 2);
        const int length = cursor.GetLength(3);
        if (const auto* const picture = static_cast<const char*>(cursor.GetBlob(3)); picture != nullptr) {
            subject.bytes.insert(subject.bytes.end(), picture, picture + length);
        }
        subject.result += cursor[Absent].GetValueType();
    });
}

bool OpenAgain(Subject& subject, SqlTable& cursor)
{
    const bool read = cursor.Open(Query) && cursor.ReadNext() && cursor.Open(OtherQuery) && cursor.ReadNext() &&
                      cursor.Columns() == 1;
    if (read) {
        subject.text = cursor.GetText(0);
    }
    return read;
}

bool OpenMalformed(Subject&, SqlTable& cursor)
{
    return !cursor.Open(Malformed) && cursor.GetLastError() == SQLITE_ERROR && !cursor.IsOpen();
}

bool FailStep(Subject&, SqlTable& cursor)
{
    if (!cursor.Open(Overflow)) {
        return false;
    }
    const bool stepped = cursor.ReadNext();
    const bool rewound = cursor.Reset();
    const bool failedAgain = !cursor.ReadNext() && !cursor.Close();
    return !stepped && !rewound && failedAgain && cursor.GetLastError() == SQLITE_ERROR;
}

bool ReadConverted(Subject& subject, SqlTable& cursor)
{
    return ReadRows(cursor, Conversions, [&] {
        for (int column = 0; column < cursor.Columns(); ++column) {
            subject.text += cursor.GetText(column);
        }
    });
}

bool Move(Subject& subject, SqlTable& cursor)
{
    NoDestructor<SqlTable> taken(*subject.connection);
    *taken = std::move(cursor);
    cursor = std::move(*taken);
    return cursor.IsOpen();
}

// Reading a text reports a failed conversion at once.
bool ReadTexts(Subject& subject, SqlTable& cursor)
{
    return ReadRows(cursor, ValueQuery, [&] {
        for (int column = 0; column < 5; ++column) {
            subject.text += Value<std::string>(cursor, column);
        }
        subject.integer += Value<int>(cursor, 0) + Value<long long>(cursor, 1);
        subject.real += Value<double>(cursor, 2);
    });
}

// Reading the bytes of a value that is not a blob reports a failed conversion when the cursor continues, at the latest
// when it is closed.
bool ReadBytes(Subject& subject, SqlTable& cursor)
{
    if (!cursor.Open(ValueQuery)) {
        return false;
    }
    if (!cursor.ReadNext()) {
        cursor.Close();
        return false;
    }
    for (int column = 0; column < cursor.Columns(); ++column) {
        const auto bytes = Value<std::vector<char>>(cursor, column);
        subject.bytes.insert(subject.bytes.end(), bytes.begin(), bytes.end());
    }
    return cursor.Close();
}

Report ReadMissing(Subject&)
{
    SqlValue missing(nullptr);
    const bool zero = missing.GetValue<long long>() == 0 && missing.GetValueType() < 0;
    return ReportOf(zero && missing.GetLastError() == 112, missing);
}

Report MoveValue(Subject& subject)
{
    SqlValue first = (*subject.cursor)[0];
    SqlValue second(std::move(first));
    first = std::move(second);
    return ReportOf(first.GetValueType() == SQLITE_INTEGER, first);
}

Report StoreMessage(Subject&)
{
    SqlError error;
    error.SetError(5);
    error.SetErrorMsg(AllocatedText);
    const SqlError copy(error);
    return {copy.GetLastErrorMsg() == error.GetLastErrorMsg(), copy.GetLastError(), ""};
}

} // namespace

std::vector<Scenario> CursorScenarios()
{
    using S = Scenario;
    return {
        S{"ConstructCursor", OpenConnection, {0, 1}, Construct},
        S{"WalkCursor", MakeCursor, {20, 3}, On(Cursor, Walk)},
        S{"OpenCursorAgain", MakeWarmCursor, {20, 0}, On(Cursor, OpenAgain)}.WithoutSqlite(FailedStep),
        S{"OpenCursorOnMalformedText", MakeWarmCursor, {5, 1}, On(Cursor, OpenMalformed)},
        S{"FailCursorStep", MakeCursor, {5, 1}, On(Cursor, FailStep)},
        S{"ReadConvertedFromCursor", MakeWarmCursor, {20, 3}, On(Cursor, ReadConverted)}.ConvertsText(),
        S{"MoveCursor", ArrangeRow, {0, 1}, On(Cursor, Move)},
        S{"DestroyOpenCursor", MakeWarmCursor, {10, 1}, DestroyOpen}.WithoutSqlite(FailedStep),

        S{"ReadTextsOfValues", MakeWarmCursor, {20, 3}, On(Cursor, ReadTexts)}.ConvertsText(),
        S{"ReadBytesOfValues", MakeWarmCursor, {20, 3}, On(Cursor, ReadBytes)},
        S{"ReadMissingValue", Nothing, {0, 1}, ReadMissing},
        S{"MoveValue", ArrangeRow, {0, 0}, MoveValue},
        S{"StoreMessageInRecord", Nothing, {0, 2}, StoreMessage},
    };
}

} // namespace Morvik::sql::tests
