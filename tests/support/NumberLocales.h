#pragma once

#include <algorithm>
#include <cfenv>
#include <ios>
#include <locale>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Morvik::sql::tests {

/// Writes numbers with the given decimal point, separator and grouping; the names of booleans do not change. By default
/// 1234567.5 is written as 1.234.567,5.
class Punctuation : public std::numpunct<char> {
public:
    explicit Punctuation(char point = ',', char separator = '.', std::string grouping = "\3")
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

/// Writes an x for every character of a number.
class WideningToX : public std::ctype<char> {
protected:
    const char* do_widen(const char* low, const char* high, char* to) const override
    {
        std::fill(to, to + (high - low), 'x');
        return high;
    }
};

/// Writes the given text for every number and, if requested, then throws an object that is not a standard exception.
class FixedNumbers : public std::num_put<char> {
public:
    FixedNumbers(std::string text, bool throws) : m_text(std::move(text)), m_throws(throws) {}

    struct Thrown {};

protected:
    iter_type do_put(iter_type out, std::ios_base&, char_type, long) const override { return Put(out); }
    iter_type do_put(iter_type out, std::ios_base&, char_type, unsigned long) const override { return Put(out); }
    iter_type do_put(iter_type out, std::ios_base&, char_type, double) const override { return Put(out); }

private:
    iter_type Put(iter_type out) const
    {
        out = std::copy(m_text.begin(), m_text.end(), out);
        return m_throws ? throw Thrown() : out;
    }

    std::string m_text;
    bool m_throws;
};

/// A locale for parameterized tests; its name is an identifier.
struct NumberLocale {
    std::string name;
    std::locale locale;

    friend std::ostream& operator<<(std::ostream& stream, const NumberLocale& chosen) { return stream << chosen.name; }
};

/// The classic locale, and locales that need not be installed: each of those writes most numbers differently.
inline std::vector<NumberLocale> NumberLocales()
{
    const auto with = [](auto* facet) { return std::locale(std::locale::classic(), facet); };
    const std::locale comma = with(new Punctuation);
    return {{"Classic", std::locale::classic()},
            {"CommaAndGroupsOfThree", comma},
            {"GroupsOfOneThenTwo", with(new Punctuation('.', '_', "\1\2"))},
            {"LetterForAPoint", with(new Punctuation('e', '-', ""))},
            {"CombinedUnderTheClassicName", std::locale::classic().combine<std::numpunct<char>>(comma)},
            {"DigitsWidened", with(new WideningToX)},
            {"EveryFacetReplaced", std::locale(std::locale(comma, new WideningToX), new FixedNumbers("7", false))},
            {"NoText", with(new FixedNumbers("", false))},
            {"Throwing", with(new FixedNumbers("", true))},
            {"ThrowingAfterSomeText", with(new FixedNumbers("12", true))}};
}

/// Sets the process-wide C++ locale during the lifetime of the object; the default has a decimal comma and digit
/// groups.
class ScopedGlobalLocale {
public:
    ScopedGlobalLocale() : ScopedGlobalLocale(std::locale(std::locale::classic(), new Punctuation)) {}
    explicit ScopedGlobalLocale(const std::locale& locale) : m_previous(std::locale::global(locale)) {}
    ~ScopedGlobalLocale() { std::locale::global(m_previous); }

    ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
    ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

private:
    std::locale m_previous;
};

/// Sets the rounding mode of this thread during the lifetime of the object.
class ScopedRounding {
public:
    explicit ScopedRounding(int mode) : m_previous(std::fegetround())
    {
        if (std::fesetround(mode) != 0) {
            throw std::runtime_error("the rounding mode cannot be set");
        }
    }
    ~ScopedRounding() { std::fesetround(m_previous); }

    ScopedRounding(const ScopedRounding&) = delete;
    ScopedRounding& operator=(const ScopedRounding&) = delete;

private:
    int m_previous;
};

/// The rounding modes that change the last digit of a number.
inline const std::vector<int> UnusualRoundings{FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

} // namespace Morvik::sql::tests
