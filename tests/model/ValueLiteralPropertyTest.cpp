#include "model/ValueLiteral.h"

#include <cmath>
#include <cstdint>
#include <string_view>

#include <gtest/gtest.h>

#include "model/LiteralOf.h"
#include "support/FuzzInput.h"
#include "support/NumberLocales.h"
#include "support/ReferenceRendering.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;

constexpr int CellsPerSeed = 5000;

DbTableColumnValue RandomCell(FuzzInput& choices)
{
    const auto tag = static_cast<std::int32_t>(choices.Below(14)) - 2;
    const std::int32_t number = static_cast<std::int32_t>(choices.Bits()) >> choices.Below(32);
    // Many of the bytes are quotes, because the library changes only quotes. The others are bytes of every kind.
    const std::string bytes =
        choices.TextOf("'\"''\"\"ab \0\n\\%;\x7F\x80\xC3\xA4\xFF"sv, choices.OneIn(10) ? 300 : 12);
    const std::vector<decltype(DbTableColumnValue::value)> values{
        number, number * std::pow(10.0, static_cast<int>(choices.Below(40)) - 20), bytes,
        std::vector<char>(bytes.begin(), bytes.end())};
    return {static_cast<DbTableColumnType>(tag), choices.Bits(), choices.Of(values)};
}

void ExpectReferenceLiterals(FuzzInput choices)
{
    int withLiteral = 0;
    for (int i = 0; i < CellsPerSeed; ++i) {
        const DbTableColumnValue cell = RandomCell(choices);

        const std::optional<std::string> literal = LiteralOf(cell);

        ASSERT_EQ(literal.value_or(""), ReferenceLiteral(cell))
            << "tag " << static_cast<std::int32_t>(cell.type) << " with alternative " << cell.value.index()
            << " in cell " << i;
        withLiteral += literal.has_value() ? 1 : 0;
    }
    EXPECT_GT(withLiteral, CellsPerSeed / 10);
    EXPECT_LT(withLiteral, CellsPerSeed - CellsPerSeed / 10);
}

TEST(ValueLiteralPropertyTest, EveryCellEqualsItsReferenceRenderingInBothLocales)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        ExpectReferenceLiterals(FuzzInput(seed));
        const ScopedGlobalLocale withACommaAndGroups;
        ExpectReferenceLiterals(FuzzInput(seed));
    }
}

TEST(ValueLiteralPropertyTest, ExpectedSizeIsEnoughForEveryValueWithoutQuotes)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);
        for (int i = 0; i < CellsPerSeed; ++i) {
            DbTableColumnValue cell = RandomCell(choices);
            cell.type = static_cast<DbTableColumnType>(cell.value.index() + 1);
            if (auto* const text = std::get_if<std::string>(&cell.value)) {
                *text = choices.TextOf("ab \0"sv, 300);
            }
            const std::string literal = ReferenceLiteral(cell);

            ASSERT_GE(ColumnValueSize(cell), literal.size()) << literal;
            ASSERT_LE(ColumnValueSize(cell), literal.size() + 13) << literal;
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
