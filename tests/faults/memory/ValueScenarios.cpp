#include <sqlite3.h>

#include <utility>

#include "Scenario.h"

namespace Morvik::sql::tests {

namespace {

const std::string Query = "SELECT substr(name, 2), 4294967296, 2.5, zeroblob(4000), name, NULL FROM t WHERE id < 3";

template <typename T>
T Read(const Subject& subject, int column)
{
    return (*subject.cursor)[column].GetValue<T>();
}

// Reading a text reports a failed conversion at once.
Report ReadTexts(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Query)) {
        return ReportOf(false, cursor);
    }
    while (cursor.ReadNext()) {
        for (int column = 0; column < 5; ++column) {
            subject.text += Read<std::string>(subject, column);
        }
        subject.integer += Read<int>(subject, 0) + Read<long long>(subject, 1);
        subject.real += Read<double>(subject, 2);
    }
    const bool ended = cursor.GetLastError() == SQLITE_OK;
    const bool closed = cursor.Close();
    return ReportOf(ended && closed, cursor);
}

// Reading the bytes of a value that is not a blob reports a failed conversion when the cursor continues, at the latest
// when it is closed.
Report ReadBytes(Subject& subject)
{
    const SqlTable& cursor = *subject.cursor;
    if (!cursor.Open(Query)) {
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

Report Move(Subject& subject)
{
    SqlValue first = (*subject.cursor)[0];
    SqlValue second(std::move(first));
    first = std::move(second);
    return ReportOf(first.GetValueType() == 1, first);
}

void ArrangeRow(Subject& subject)
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

std::vector<Scenario> ValueScenarios()
{
    return {
        {.name = "ReadTextsOfValues",
         .arrange = MakeWarmCursor,
         .act = ReadTexts,
         .least = {20, 3},
         .convertsText = true},
        {.name = "ReadBytesOfValues", .arrange = MakeWarmCursor, .act = ReadBytes, .least = {20, 3}},
        {.name = "ReadMissingValue", .arrange = Nothing, .act = ReadMissing, .least = {0, 1}},
        {.name = "MoveValue", .arrange = ArrangeRow, .act = Move, .least = {0, 0}},
        {.name = "StoreMessageInRecord", .arrange = Nothing, .act = StoreMessage, .least = {0, 2}},
    };
}

} // namespace Morvik::sql::tests
