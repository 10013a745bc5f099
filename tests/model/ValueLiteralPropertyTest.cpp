#include "model/ValueLiteral.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/LiteralOf.h"
#include "support/FuzzInput.h"
#include "support/NumberLocales.h"
#include "support/PlainRendering.h"
#include "support/TestSeeds.h"

namespace Morvik::sql::tests {

namespace {

using namespace std::string_view_literals;

constexpr int CellsPerSeed = 5000;

std::string RandomBytes(FuzzInput& choices)
{
    // Mostly quotes, because only they are changed, between bytes of every kind.
    return choices.TextOf("'\"''\"\"ab \0\n\\%;\x7F\x80\xC3\xA4\xFF"sv, choices.OneIn(10) ? 300 : 12);
}

double RandomReal(FuzzInput& choices)
{
    if (choices.OneIn(4)) {
        return static_cast<double>(static_cast<std::int32_t>(choices.Bits())) / 1000.0;
    }
    const std::uint64_t upper = choices.Bits();
    return std::bit_cast<double>(upper << 32 | choices.Bits());
}

std::int32_t IntegerChoice(FuzzInput& choices)
{
    const auto bits = static_cast<std::int32_t>(choices.Bits());
    return choices.OneIn(2) ? bits : bits % 2000;
}

DbTableColumnType RandomTag(FuzzInput& choices)
{
    if (choices.OneIn(20)) {
        return static_cast<DbTableColumnType>(choices.Bits());
    }
    return static_cast<DbTableColumnType>(static_cast<std::int32_t>(choices.Below(14)) - 2);
}

DbTableColumnValue RandomCell(FuzzInput& choices)
{
    DbTableColumnValue cell;
    cell.type = RandomTag(choices);
    cell.column = choices.Bits();
    const std::string bytes = RandomBytes(choices);
    switch (choices.Below(4)) {
    case 0:
        cell.value = IntegerChoice(choices);
        break;
    case 1:
        cell.value = RandomReal(choices);
        break;
    case 2:
        cell.value = bytes;
        break;
    default:
        cell.value = std::vector<char>(bytes.begin(), bytes.end());
        break;
    }
    return cell;
}

void ExpectPlainLiterals(FuzzInput& choices)
{
    int withLiteral = 0;
    for (int i = 0; i < CellsPerSeed; ++i) {
        const DbTableColumnValue cell = RandomCell(choices);
        const std::string expected = PlainLiteral(cell);

        const std::optional<std::string> literal = LiteralOf(cell);

        ASSERT_EQ(literal.value_or(""), expected) << "tag " << static_cast<std::int32_t>(cell.type)
                                                  << " with alternative " << cell.value.index() << " in cell " << i;
        withLiteral += literal.has_value() ? 1 : 0;
    }
    EXPECT_GT(withLiteral, CellsPerSeed / 10);
    EXPECT_LT(withLiteral, CellsPerSeed - CellsPerSeed / 10);
}

TEST(ValueLiteralPropertyTest, EveryCellReadsAsThePlainRenderingOfIt)
{
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);

        ExpectPlainLiterals(choices);
    }
}

TEST(ValueLiteralPropertyTest, EveryCellReadsAsThePlainRenderingOfItWithADecimalComma)
{
    const ScopedGlobalLocale locale;
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);

        ExpectPlainLiterals(choices);
    }
}

TEST(ValueLiteralPropertyTest, ExpectedSizeHoldsEveryValueWithoutQuotes)
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
            const std::string literal = PlainLiteral(cell);

            ASSERT_GE(ColumnValueSize(cell), literal.size()) << literal;
            ASSERT_LE(ColumnValueSize(cell), literal.size() + 13) << literal;
        }
    }
}

} // namespace

} // namespace Morvik::sql::tests
