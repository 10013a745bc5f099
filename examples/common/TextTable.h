#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace examples {

enum class Align { Left, Right };

/// A table of text whose columns are as wide as their widest cell. Texts are UTF-8.
///
///     TextTable table({{"package", Align::Left}, {"size", Align::Right}});
///     table.AddRow({"bash", "7.0 MiB"});
///     table.Print(std::cout);
class TextTable {
public:
    struct Column {
        std::string title;
        Align align;
    };

    explicit TextTable(std::vector<Column> columns);

    /// Adds a row with a cell for every column.
    void AddRow(std::vector<std::string> cells);

    /// Writes the titles and the rows, indented by two blanks.
    void Print(std::ostream& out) const;

private:
    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

/// A bar of up to `width` characters, as long as `value` is of `largest`; the smallest value above zero shows too.
std::string Bar(double value, double largest, int width);

/// `number` with at most `decimals` decimals, none of them a trailing zero: "0.5", "60".
std::string Shown(double number, int decimals = 2);

/// `number` with exactly `decimals` decimals: "0.50", "60.00".
std::string Fixed(double number, int decimals);

/// The first line of `text`, cut to `width` characters, with "..." where something was cut off.
std::string Shortened(std::string_view text, std::size_t width);

/// `text` with a blank in the place of every control character, so that it stays on its line.
std::string Printable(std::string_view text);

} // namespace examples
