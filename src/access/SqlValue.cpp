#include <sql/SqlValue.h>

#include "access/ResultCode.h"
#include "access/SqliteErrors.h"
#include "access/SqliteValue.h"

namespace Morvik::sql {

namespace {

// Stores code 112 because there is no value to read. The code stays when a later read succeeds.
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
    return static_cast<int>(SqliteValue(*this).Type());
}

template <>
int SqlValue::GetValue<int>()
{
    return HasInstance(*this) ? SqliteValue(*this).Integer() : 0;
}

template <>
long long SqlValue::GetValue<long long>()
{
    return HasInstance(*this) ? SqliteValue(*this).Integer64() : 0;
}

template <>
double SqlValue::GetValue<double>()
{
    return HasInstance(*this) ? SqliteValue(*this).Real() : 0.0;
}

template <>
std::string SqlValue::GetValue<std::string>()
{
    if (!HasInstance(*this)) {
        return {};
    }
    const SqliteValue value(*this);
    if (value.Type() == StorageClass::Null) {
        ThrowNullText();
    }
    return std::string(value.Text());
}

template <>
std::vector<char> SqlValue::GetValue<std::vector<char>>()
{
    const std::span<const char> bytes = HasInstance(*this) ? SqliteValue(*this).Blob() : std::span<const char>();
    return {bytes.begin(), bytes.end()};
}

} // namespace Morvik::sql
