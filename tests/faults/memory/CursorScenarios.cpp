// Cursors, and the values that they return.
#include <sqlite3.h>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT id, name, weight, picture FROM t WHERE name <> '' ORDER BY name, id";
const std::string ValueQuery =
    "SELECT substr(name, 2), 4294967296, 2.5, zeroblob(4000), name, NULL FROM t WHERE id < 3";
const std::string OtherQuery = "SELECT name FROM room ORDER BY 1 DESC";
const std::string Conversions = "SELECT substr(name, 2), 4294967296 + id, 2.5 * id, upper(name) FROM t WHERE id < 3";

template <typename T>
T Value(const SqlTable& cursor, int column)
{
    return cursor[column].GetValue<T>();
}

void ArrangeOpenCursor(Subject& subject)
{
    Warm<MakeCursor>(subject);
    subject.cursor->Open(Query);
    subject.cursor->ReadNext();
}

// Calls `read` for each row of the open query, and closes the cursor. Only the code distinguishes the end of the rows
// from a failed step. A failed step has the generic code; closing returns the specific one.
template <typename Read>
bool ReadRows(const SqlTable& cursor, const Read& read)
{
    while (cursor.ReadNext()) {
        read();
    }
    const bool ended = cursor.GetLastError() == SQLITE_OK;
    return cursor.Close() && ended;
}

// Assigns a cursor that is on its first row, or whose first step failed. This closes the query that the cursor holds;
// the error of that closing is discarded.
bool Replace(Subject& subject, SqlTable& cursor)
{
    SqlTable source(*subject.connection);
    const bool read = source.Open(OtherQuery) && source.ReadNext();
    NoDestructor<SqlTable> closed(*subject.connection);
    cursor = std::move(source);
    source = std::move(*closed);
    if (read) {
        subject.text = cursor.GetText(0);
    }
    return read && cursor.IsOpen() && cursor.GetLastError() == SQLITE_ROW;
}

} // namespace

void AddCursorScenarios(ScenarioList& list)
{
    list.Add("ConstructCursor", OpenConnection, {0, 1},
             [](Subject& subject) { return Report(true, subject.cursor.emplace(*subject.connection)); });
    list.Add("WalkCursor", MakeCursor, {20, 3}, Cursor, [](Subject& subject, SqlTable& cursor) {
        return cursor.Open(Query) && ReadRows(cursor, [&] {
                   subject.integer += cursor.GetInt64(0) + cursor.GetInteger(0) + cursor.Columns();
                   subject.Note(cursor.GetText(1));
                   subject.Note(cursor["name"].GetValue<std::string>());
                   subject.Note(Value<double>(cursor, 2));
                   const int length = cursor.GetLength(3);
                   if (const auto* const picture = static_cast<const char*>(cursor.GetBlob(3)); picture != nullptr) {
                       subject.bytes.insert(subject.bytes.end(), picture, picture + length);
                   }
                   subject.result += cursor["Name"].GetValueType();
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
    list.Add("ReadConvertedFromCursor", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = {BadAlloc}},
             Cursor, [](Subject& subject, SqlTable& cursor) {
                 return cursor.Open(Conversions) && ReadRows(cursor, [&] {
                            for (int column = 0; column < cursor.Columns(); ++column) {
                                subject.Note(cursor.GetText(column));
                            }
                        });
             });
    list.Add("DestroyOpenCursor", Warm<MakeCursor>, {.ofSqlite = 10, .ofNew = 1, .errorsOfSqlite = FailedStep},
             [](Subject& subject) {
                 const SqlTable cursor(*subject.connection);
                 return Report(cursor.Open(Query) && cursor.ReadNext(), cursor);
             });

    list.Add("MoveCursor", ArrangeOpenCursor, {0, 1}, Cursor, [](Subject& subject, SqlTable& cursor) {
        NoDestructor<SqlTable> taken(*subject.connection);
        *taken = std::move(cursor);
        cursor = std::move(*taken);
        return cursor.IsOpen();
    });
    list.Add("MoveOntoAnOpenCursor", ArrangeOpenCursor, {.ofSqlite = 20, .ofNew = 2, .errorsOfSqlite = FailedStep},
             Cursor, Replace);
    list.Add("MoveOntoAFailedCursor", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = FailedStep},
             Cursor, [](Subject& subject, SqlTable& cursor) {
                 return cursor.Open(Overflow) && !cursor.ReadNext() && Replace(subject, cursor);
             });
    list.Add("WalkMovedCursor", Warm<MakeCursor>, {20, 3}, Cursor, [](Subject& subject, SqlTable& cursor) {
        if (!cursor.Open(Query)) {
            return false;
        }
        MovedAway<SqlTable> moved(cursor);
        return ReadRows(*moved, [&] {
            subject.integer += moved->GetInt64(0);
            subject.Note(moved->GetText(1));
        });
    });

    // Reading a text reports a failed conversion at once.
    list.Add("ReadTextsOfValues", Warm<MakeCursor>, {.ofSqlite = 20, .ofNew = 3, .errorsOfSqlite = {BadAlloc}}, Cursor,
             [](Subject& subject, SqlTable& cursor) {
                 return cursor.Open(ValueQuery) && ReadRows(cursor, [&] {
                            for (int column = 0; column < 5; ++column) {
                                subject.Note(Value<std::string>(cursor, column));
                            }
                            subject.integer += Value<int>(cursor, 0) + Value<long long>(cursor, 1);
                            subject.Note(Value<double>(cursor, 2));
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
            subject.Note(Value<std::vector<char>>(cursor, column));
        }
        return cursor.Close();
    });
    list.Add("ReadMissingValue", Nothing, {0, 1}, [](Subject&) {
        SqlValue missing(nullptr);
        const bool zero = missing.GetValue<long long>() == 0 && missing.GetValueType() < 0;
        return Report(zero && missing.GetLastError() == 112, missing);
    });
    list.Add("MoveValue", ArrangeOpenCursor, {0, 0}, [](Subject& subject) {
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
