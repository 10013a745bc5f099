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
    return ReadRows(cursor, Query, [&] {
        subject.integer += cursor.GetInt64(0) + cursor.GetInteger(0) + cursor.Columns();
        subject.text += cursor.GetText(1);
        subject.otherText += cursor[Name].GetValue<std::string>();
        subject.real += cursor[2].GetValue<double>();
        const int length = cursor.GetLength(3);
        if (const auto* const picture = static_cast<const char*>(cursor.GetBlob(3)); picture != nullptr) {
            subject.bytes.insert(subject.bytes.end(), picture, picture + length);
        }
        subject.result += cursor[Absent].GetValueType();
    });
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
    return ReadRows(cursor, Conversions, [&] {
        for (int column = 0; column < cursor.Columns(); ++column) {
            subject.text += cursor.GetText(column);
        }
    });
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

template <typename T>
T Read(const Subject& subject, int column)
{
    return (*subject.cursor)[column].GetValue<T>();
}

// Reading a text reports a failed conversion at once.
Report ReadTexts(Subject& subject)
{
    return ReadRows(*subject.cursor, ValueQuery, [&] {
        for (int column = 0; column < 5; ++column) {
            subject.text += Read<std::string>(subject, column);
        }
        subject.integer += Read<int>(subject, 0) + Read<long long>(subject, 1);
        subject.real += Read<double>(subject, 2);
    });
}

// Reading the bytes of a value that is not a blob reports a failed conversion when the cursor continues, at the latest
// when it is closed.
Report ReadBytes(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(ValueQuery)) {
        return ReportOf(false, cursor);
    }
    if (!cursor.ReadNext()) {
        cursor.Close();
        return ReportOf(false, cursor);
    }
    for (int column = 0; column < cursor.Columns(); ++column) {
        const std::vector<char> bytes = Read<std::vector<char>>(subject, column);
        subject.bytes.insert(subject.bytes.end(), bytes.begin(), bytes.end());
    }
    return ReportOf(cursor.Close(), cursor);
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
    return ReportOf(first.GetValueType() == 1, first);
}

void ArrangeNumber(Subject& subject)
{
    MakeCursor(subject);
    subject.cursor->Open("SELECT 7");
    subject.cursor->ReadNext();
}

Report StoreMessage(Subject&)
{
    SqlError record;
    record.SetError(5);
    record.SetErrorMsg(LongText);
    const SqlError copy(record);
    return {copy.GetLastErrorMsg() == record.GetLastErrorMsg(), copy.GetLastError(), ""};
}

} // namespace

std::vector<Scenario> CursorScenarios()
{
    using S = Scenario;
    return {
        S{"ConstructCursor", OpenConnection, Construct, {0, 1}},
        S{"WalkCursor", MakeCursor, Walk, {20, 3}},
        S{"OpenCursorAgain", MakeWarmCursor, OpenAgain, {20, 0}}.WithoutSqlite(FailedStep),
        S{"OpenCursorOnMalformedText", MakeWarmCursor, OpenMalformed, {5, 1}},
        S{"FailCursorStep", MakeCursor, FailStep, {5, 1}},
        S{"ReadConvertedFromCursor", MakeWarmCursor, ReadConverted, {20, 3}}.ConvertsText(),
        S{"MoveCursor", ArrangeRow, Move, {0, 1}},
        S{"DestroyOpenCursor", MakeWarmCursor, DestroyOpen, {10, 1}}.WithoutSqlite(FailedStep),

        S{"ReadTextsOfValues", MakeWarmCursor, ReadTexts, {20, 3}}.ConvertsText(),
        S{"ReadBytesOfValues", MakeWarmCursor, ReadBytes, {20, 3}},
        S{"ReadMissingValue", Nothing, ReadMissing, {0, 1}},
        S{"MoveValue", ArrangeNumber, MoveValue, {0, 0}},
        S{"StoreMessageInRecord", Nothing, StoreMessage, {0, 2}},
    };
}

} // namespace Morvik::sql::tests
