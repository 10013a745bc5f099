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
const std::string Name = "name";
const std::string Absent = "Name";

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

} // namespace

void AddCursorScenarios(ScenarioList& list)
{
    list.Add("ConstructCursor", OpenConnection, {0, 1},
             [](Subject& subject) { return Report(true, subject.cursor.emplace(*subject.connection)); });
    list.Add("WalkCursor", MakeCursor, {20, 3}, Cursor, [](Subject& subject, SqlTable& cursor) {
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
    });
    list.Add("OpenCursorAgain", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 0, .errorsOfSqlite = FailedStep}, Cursor,
             [](Subject& subject, SqlTable& cursor) {
                 const bool read = cursor.Open(Query) && cursor.ReadNext() && cursor.Open(OtherQuery) &&
                                   cursor.ReadNext() && cursor.Columns() == 1;
                 if (read) {
                     subject.text = cursor.GetText(0);
                 }
                 return read;
             });
    list.Add("OpenCursorOnMalformedText", Warm<MakeCursor>, {5, 1}, Cursor, [](Subject&, SqlTable& cursor) {
        return !cursor.Open(Malformed) && cursor.GetLastError() == SQLITE_ERROR && !cursor.IsOpen();
    });
    list.Add("FailCursorStep", MakeCursor, {5, 1}, Cursor, [](Subject&, SqlTable& cursor) {
        if (!cursor.Open(Overflow)) {
            return false;
        }
        const bool stepped = cursor.ReadNext();
        const bool rewound = cursor.Reset();
        const bool failedAgain = !cursor.ReadNext() && !cursor.Close();
        return !stepped && !rewound && failedAgain && cursor.GetLastError() == SQLITE_ERROR;
    });
    list.Add("ReadConvertedFromCursor", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .convertsText = true}, Cursor,
             [](Subject& subject, SqlTable& cursor) {
                 return ReadRows(cursor, Conversions, [&] {
                     for (int column = 0; column < cursor.Columns(); ++column) {
                         subject.text += cursor.GetText(column);
                     }
                 });
             });
    list.Add("MoveCursor", ArrangeRow, {0, 1}, Cursor, [](Subject& subject, SqlTable& cursor) {
        NoDestructor<SqlTable> taken(*subject.connection);
        *taken = std::move(cursor);
        cursor = std::move(*taken);
        return cursor.IsOpen();
    });
    list.Add("DestroyOpenCursor", Warm<MakeCursor>, {.ofSqlite = 10, .ofNew = 1, .errorsOfSqlite = FailedStep},
             [](Subject& subject) {
                 const SqlTable cursor(*subject.connection);
                 return Report(cursor.Open(Query) && cursor.ReadNext(), cursor);
             });

    // Reading a text reports a failed conversion at once.
    list.Add("ReadTextsOfValues", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .convertsText = true}, Cursor,
             [](Subject& subject, SqlTable& cursor) {
                 return ReadRows(cursor, ValueQuery, [&] {
                     for (int column = 0; column < 5; ++column) {
                         subject.text += Value<std::string>(cursor, column);
                     }
                     subject.integer += Value<int>(cursor, 0) + Value<long long>(cursor, 1);
                     subject.real += Value<double>(cursor, 2);
                 });
             });
    // Reading the bytes of a value that is not a blob reports a failed conversion when the cursor continues, at the
    // latest when it is closed.
    list.Add("ReadBytesOfValues", Warm<MakeCursor>, {20, 3}, Cursor, [](Subject& subject, SqlTable& cursor) {
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
    });
    list.Add("ReadMissingValue", Nothing, {0, 1}, [](Subject&) {
        SqlValue missing(nullptr);
        const bool zero = missing.GetValue<long long>() == 0 && missing.GetValueType() < 0;
        return Report(zero && missing.GetLastError() == 112, missing);
    });
    list.Add("MoveValue", ArrangeRow, {0, 0}, [](Subject& subject) {
        SqlValue first = (*subject.cursor)[0];
        SqlValue second(std::move(first));
        first = std::move(second);
        return Report(first.GetValueType() == SQLITE_INTEGER, first);
    });
    list.Add("CopyError", Nothing, {0, 2}, [](Subject&) {
        SqlError error;
        error.SetError(5);
        error.SetErrorMsg(AllocatedText);
        const SqlError copy(error);
        return Report(copy.GetLastErrorMsg() == error.GetLastErrorMsg(), copy.GetLastError(), "");
    });
}

} // namespace Morvik::sql::tests
