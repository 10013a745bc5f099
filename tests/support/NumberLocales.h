#pragma once

#include <locale>
#include <ostream>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// Writes numbers with the given point, separator and grouping, the booleans' names left as they are.
class Punctuation : public std::numpunct<char> {
public:
    Punctuation(char point, char separator, std::string grouping)
        : m_point(point), m_separator(separator), m_grouping(std::move(grouping))
    {}

protected:
    char do_decimal_point() const override { return m_point; }
    char do_thousands_sep() const override { return m_separator; }
    std::string do_grouping() const override { return m_grouping; }

private:
    char m_point;
    char m_separator;
    std::string m_grouping;
};

/// A locale for parameterized tests, under a name that is an identifier.
struct NumberLocale {
    std::string name;
    std::locale locale;

    friend std::ostream& operator<<(std::ostream& stream, const NumberLocale& chosen) { return stream << chosen.name; }
};

/// The classic locale, and others that need no installed one: each writes most numbers in another way.
inline std::vector<NumberLocale> NumberLocales()
{
    const auto with = [](auto... punctuation) {
        return std::locale(std::locale::classic(), new Punctuation(punctuation...));
    };
    return {{"Classic", std::locale::classic()},
            {"CommaAndGroupsOfThree", with(',', '.', "\3")},
            {"GroupsOfOneThenTwo", with('.', '_', "\1\2")},
            {"LetterForAPoint", with('e', '-', "")}};
}

} // namespace Morvik::sql::tests
