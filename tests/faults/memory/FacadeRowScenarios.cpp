#include "Scenario.h"
#include "support/Cells.h"
#include "support/SoakMode.h"

namespace Morvik::sql::tests {

namespace {

const std::string Table = "t";
const std::string Condition = "WHERE id > 1";
const std::string NoRow = "WHERE 0";

void ArrangeRows(Subject& subject)
{
    OpenFacade(subject);
    subject.write.columns = {"name", "weight", "picture"};
    for (int row = 0; row < Rounds(3, 100); ++row) {
        subject.write.rows.push_back(
            {{TextCell(LongText + std::to_string(row)), RealCell(0.1 + row), BlobCell("bytes of the picture")}});
    }
}

// Doubling the quotes needs a separate allocation.
void ArrangeQuotes(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write.columns = {"weight", "name"};
    subject.write.rows = {{{IntegerCell(7), TextCell("O'Brien and O'Hara of \"The Blue Door\"")}}};
}

void ArrangeInvalidCell(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write.columns = {"name", "weight"};
    subject.write.rows = {{{TextCell("a"), InvalidCell(1)}}};
}

void ArrangeTimes(Subject& subject)
{
    OpenWarmFacade(subject);
    subject.write.columns = {"name", "weight", "picture", "id"};
    subject.write.rows = {
        {{TagCell(DbTableColumnType::DateTimeNow), TagCell(DbTableColumnType::JulianDayNow),
          TagCell(DbTableColumnType::DateTimeNowLocalTime), TagCell(DbTableColumnType::UnixTimeNow)}}};
}

Report Write(Subject& subject)
{
    return ReportOf(subject.facade->WriteTableValues(Table, subject.write), *subject.facade);
}

Report WriteInvalid(Subject& subject)
{
    const bool written = subject.facade->WriteTableValues(Table, subject.write);
    return ReportOf(!written && subject.facade->GetLastError() == 1, *subject.facade);
}

template <const std::string& Selected>
Report Update(Subject& subject)
{
    return ReportOf(subject.facade->UpdateTableValues(Table, subject.write, Selected), *subject.facade);
}

} // namespace

std::vector<Scenario> FacadeRowScenarios()
{
    return {
        {.name = "WriteTableValues", .arrange = ArrangeRows, .act = Write, .least = {40, 2}},
        {.name = "WriteTextWithQuotes",
         .arrange = ArrangeQuotes,
         .act = Write,
         .least = {25, 4},
         .refusalsForNew = {{1, "near \")\": syntax error"}}},
        {.name = "WriteInvalidCell", .arrange = ArrangeInvalidCell, .act = WriteInvalid, .least = {5, 3}},
        {.name = "UpdateTableValues", .arrange = ArrangeRows, .act = Update<Condition>, .least = {40, 2}},
        {.name = "UpdateTextWithQuotes",
         .arrange = ArrangeQuotes,
         .act = Update<Condition>,
         .least = {40, 4},
         .refusalsForNew = {{1, "near \")\": syntax error"}}},
        {.name = "UpdateNoRowWithTimes", .arrange = ArrangeTimes, .act = Update<NoRow>, .least = {20, 2}},
    };
}

} // namespace Morvik::sql::tests
