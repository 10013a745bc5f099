#include <sql/SqlValue.h>

#include <sqlite3.h>

#include "access/ResultCode.h"
#include "access/ValueReading.h"

namespace Morvik::sql {

namespace {

constexpr int NoStorageClass = -1;

// Records that there is no instance to read. An earlier failure stays recorded when a later read succeeds.
bool HasInstance(SqlValue& value)
{
    if (value.ValueInstance() != nullptr) {
        return true;
    }
    value.SetError(MissingValue);
    value.SetErrorMsg("No value instance exists.");
    return false;
}

} // namespace

int SqlValue::GetValueType() const
{
    return m_value != nullptr ? sqlite3_value_type(m_value) : NoStorageClass;
}

template <>
int SqlValue::GetValue<int>()
{
    return HasInstance(*this) ? sqlite3_value_int(m_value) : 0;
}

template <>
long long SqlValue::GetValue<long long>()
{
    return HasInstance(*this) ? sqlite3_value_int64(m_value) : 0;
}

template <>
double SqlValue::GetValue<double>()
{
    return HasInstance(*this) ? sqlite3_value_double(m_value) : 0.0;
}

template <>
std::string SqlValue::GetValue<std::string>()
{
    return HasInstance(*this) ? std::string(TextOf(m_value, GetValueType())) : std::string();
}

template <>
std::vector<char> SqlValue::GetValue<std::vector<char>>()
{
    const std::span<const char> bytes = HasInstance(*this) ? BytesOf(m_value) : std::span<const char>();
    return {bytes.begin(), bytes.end()};
}

} // namespace Morvik::sql
