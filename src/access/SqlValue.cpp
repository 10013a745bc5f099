#include <sql/SqlValue.h>

#include <new>

#include <sqlite3.h>

#include "access/ResultCode.h"

namespace Morvik::sql {

namespace {

constexpr int NoStorageClass = -1;

// Reads the instance, or records that there is none. An earlier failure stays recorded when a later read succeeds.
template <typename T, typename Read>
T ReadInstance(SqlValue& value, Read read)
{
    if (value.ValueInstance() == nullptr) {
        value.SetError(MissingValue);
        value.SetErrorMsg("No value instance exists.");
        return T{};
    }
    return read(value.ValueInstance());
}

std::string ReadText(sqlite3_value* instance)
{
    const unsigned char* text = sqlite3_value_text(instance);
    // NULL raises std::logic_error below. Any other value without a text is SQLite out of memory.
    if (text == nullptr && sqlite3_value_type(instance) != SQLITE_NULL) {
        throw std::bad_alloc();
    }
    return reinterpret_cast<const char*>(text);
}

std::vector<char> ReadBytes(sqlite3_value* instance)
{
    // The length is asked for first: that may convert the value, and the pointer must be the converted value's.
    const int bytes = sqlite3_value_bytes(instance);
    const char* blob = static_cast<const char*>(sqlite3_value_blob(instance));
    if (blob == nullptr && bytes > 0) {
        throw std::bad_alloc();
    }
    return {blob, blob + bytes};
}

} // namespace

int SqlValue::GetValueType() const
{
    return m_value != nullptr ? sqlite3_value_type(m_value) : NoStorageClass;
}

template <>
int SqlValue::GetValue<int>()
{
    return ReadInstance<int>(*this, sqlite3_value_int);
}

template <>
long long SqlValue::GetValue<long long>()
{
    return ReadInstance<long long>(*this, sqlite3_value_int64);
}

template <>
double SqlValue::GetValue<double>()
{
    return ReadInstance<double>(*this, sqlite3_value_double);
}

template <>
std::string SqlValue::GetValue<std::string>()
{
    return ReadInstance<std::string>(*this, ReadText);
}

template <>
std::vector<char> SqlValue::GetValue<std::vector<char>>()
{
    return ReadInstance<std::vector<char>>(*this, ReadBytes);
}

} // namespace Morvik::sql
