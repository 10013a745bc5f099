#pragma once

#include <locale>
#include <string>

namespace Morvik::sql::tests {

/// Writes 1234567.5 as 1.234.567,5.
class DecimalComma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Installs a process-wide C++ locale for the life of the object, by default one with a decimal comma and digit groups.
class ScopedGlobalLocale {
public:
    ScopedGlobalLocale() : ScopedGlobalLocale(std::locale(std::locale::classic(), new DecimalComma)) {}
    explicit ScopedGlobalLocale(const std::locale& locale) : m_previous(std::locale::global(locale)) {}
    ~ScopedGlobalLocale() { std::locale::global(m_previous); }

    ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
    ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

private:
    std::locale m_previous;
};

} // namespace Morvik::sql::tests
