#include "support/SqliteCallRecorder.h"

#include <dlfcn.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>

namespace Morvik::sql::tests {

namespace {

struct Replacement {
    std::string function;
    int result;
    bool forward;
    int skipped;
};

struct State {
    bool recording = false;
    std::vector<std::string> calls;
    std::vector<std::string> executed;
    std::vector<Replacement> replacements;

    std::optional<Replacement> TakeReplacement(std::string_view function)
    {
        const auto found = std::find_if(replacements.begin(), replacements.end(),
                                        [&](const Replacement& each) { return each.function == function; });
        if (found == replacements.end() || found->skipped-- > 0) {
            return std::nullopt;
        }
        const Replacement taken = *found;
        replacements.erase(found);
        return taken;
    }
};

thread_local State state;
thread_local int depth = 0;

class Nested {
public:
    Nested() { ++depth; }
    ~Nested() { --depth; }
    Nested(const Nested&) = delete;
    Nested& operator=(const Nested&) = delete;
};

template <typename Function>
Function* Real(const char* name)
{
    void* const symbol = dlsym(RTLD_NEXT, name);
    if (symbol == nullptr) {
        throw std::logic_error(std::string("SQLite has no function ") + name);
    }
    return reinterpret_cast<Function*>(symbol);
}

template <typename Result>
Result FromInt(int result)
{
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(result);
    }
}

// The arguments are formatted only while recording: otherwise nothing may read the memory that they point to.
template <typename Result, typename... Parameters, typename Details>
Result Intercept(Result (*self)(Parameters...), const char* name, const Details& details,
                 std::type_identity_t<Parameters>... arguments)
{
    static_cast<void>(self);
    const auto real = Real<Result(Parameters...)>(name);
    const bool outermost = depth == 0 && state.recording;
    const Nested nested;
    if (!outermost) {
        return real(arguments...);
    }
    state.calls.push_back(name + details());
    if constexpr (!std::is_void_v<Result>) {
        if (const std::optional<Replacement> replacement = state.TakeReplacement(name)) {
            if (replacement->forward) {
                real(arguments...);
            }
            return FromInt<Result>(replacement->result);
        }
    }
    return real(arguments...);
}

std::string Text(const char* text)
{
    return text != nullptr ? text : "null";
}

std::string Text(const char* text, int count)
{
    if (text == nullptr) {
        return "null";
    }
    return count < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(count));
}

std::string Given(const void* pointer, const char* what)
{
    return pointer != nullptr ? what : "null";
}

std::string Destructor(sqlite3_destructor_type destructor)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): SQLite's own constant
    return destructor == SQLITE_TRANSIENT ? "transient" : "other";
}

std::string NoArguments()
{
    return "()";
}

std::string Column(int column)
{
    return "(" + std::to_string(column) + ")";
}

template <typename Number>
std::string Bound(int index, Number value)
{
    return "(" + std::to_string(index) + ", " + std::to_string(value) + ")";
}

std::string Bound(int index, const void* data, int count, sqlite3_destructor_type destructor)
{
    return "(" + std::to_string(index) + ", " + Text(static_cast<const char*>(data), count) + ", " +
           std::to_string(count) + ", " + Destructor(destructor) + ")";
}

} // namespace

SqliteCallRecorder::SqliteCallRecorder()
{
    if (state.recording) {
        throw std::logic_error("SQLite's calls are being recorded already");
    }
    state = State();
    state.recording = true;
}

SqliteCallRecorder::~SqliteCallRecorder()
{
    state = State();
}

const std::vector<std::string>& SqliteCallRecorder::Calls() const
{
    return state.calls;
}

std::vector<std::string> SqliteCallRecorder::CallsOf(const std::string& function) const
{
    std::vector<std::string> calls;
    for (const std::string& call : state.calls) {
        if (call.starts_with(function + "(")) {
            calls.push_back(call);
        }
    }
    return calls;
}

std::vector<std::string> SqliteCallRecorder::Executed() const
{
    return state.executed;
}

void SqliteCallRecorder::ReplaceNextResult(const std::string& function, int result, bool forward, int skipped)
{
    state.replacements.push_back({function, result, forward, skipped});
}

bool SqliteCallRecorder::Pending() const
{
    return !state.replacements.empty();
}

} // namespace Morvik::sql::tests

// When the library's calls are bound, the definitions in the program come before those of libsqlite3.
namespace tests = Morvik::sql::tests;

extern "C" {

int sqlite3_open_v2(const char* path, sqlite3** handle, int flags, const char* vfs)
{
    *handle = nullptr; // the value that SQLite leaves when it cannot allocate a statement, so that a replaced call
                       // leaves it too
    return tests::Intercept(
        sqlite3_open_v2, "sqlite3_open_v2",
        [&] { return "(" + tests::Text(path) + ", " + std::to_string(flags) + ", " + tests::Text(vfs) + ")"; }, path,
        handle, flags, vfs);
}

int sqlite3_close(sqlite3* handle)
{
    return tests::Intercept(
        sqlite3_close, "sqlite3_close", [&] { return "(" + tests::Given(handle, "handle") + ")"; }, handle);
}

int sqlite3_close_v2(sqlite3* handle)
{
    return tests::Intercept(
        sqlite3_close_v2, "sqlite3_close_v2", [&] { return "(" + tests::Given(handle, "handle") + ")"; }, handle);
}

int sqlite3_errcode(sqlite3* handle)
{
    return tests::Intercept(
        sqlite3_errcode, "sqlite3_errcode", [&] { return "(" + tests::Given(handle, "handle") + ")"; }, handle);
}

const char* sqlite3_errmsg(sqlite3* handle)
{
    return tests::Intercept(
        sqlite3_errmsg, "sqlite3_errmsg", [&] { return "(" + tests::Given(handle, "handle") + ")"; }, handle);
}

int sqlite3_exec(sqlite3* handle, const char* sql, int (*callback)(void*, int, char**, char**), void* argument,
                 char** text)
{
    if (tests::depth == 0 && tests::state.recording) {
        tests::state.executed.emplace_back(sql);
    }
    return tests::Intercept(
        sqlite3_exec, "sqlite3_exec",
        [&] {
            return "(" + tests::Given(handle, "handle") + ", " + tests::Text(sql) + ", " +
                   tests::Given(reinterpret_cast<const void*>(callback), "callback") + ", " +
                   tests::Given(argument, "argument") + ")";
        },
        handle, sql, callback, argument, text);
}

void sqlite3_free(void* memory)
{
    tests::Intercept(
        sqlite3_free, "sqlite3_free", [&] { return "(" + tests::Given(memory, "memory") + ")"; }, memory);
}

int sqlite3_prepare(sqlite3* handle, const char* sql, int count, sqlite3_stmt** statement, const char** tail)
{
    *statement = nullptr;
    return tests::Intercept(
        sqlite3_prepare, "sqlite3_prepare",
        [&] {
            return "(" + tests::Given(handle, "handle") + ", " + tests::Text(sql, count) + ", " +
                   std::to_string(count) + (tail != nullptr ? ", tail)" : ")");
        },
        handle, sql, count, statement, tail);
}

int sqlite3_prepare_v2(sqlite3* handle, const char* sql, int count, sqlite3_stmt** statement, const char** tail)
{
    *statement = nullptr;
    return tests::Intercept(
        sqlite3_prepare_v2, "sqlite3_prepare_v2",
        [&] {
            return "(" + tests::Given(handle, "handle") + ", " + tests::Text(sql, count) + ", " +
                   std::to_string(count) + (tail != nullptr ? ", tail)" : ")");
        },
        handle, sql, count, statement, tail);
}

int sqlite3_bind_int(sqlite3_stmt* statement, int index, int value)
{
    return tests::Intercept(
        sqlite3_bind_int, "sqlite3_bind_int", [&] { return tests::Bound(index, value); }, statement, index, value);
}

int sqlite3_bind_int64(sqlite3_stmt* statement, int index, sqlite3_int64 value)
{
    return tests::Intercept(
        sqlite3_bind_int64, "sqlite3_bind_int64", [&] { return tests::Bound(index, value); }, statement, index, value);
}

int sqlite3_bind_double(sqlite3_stmt* statement, int index, double value)
{
    return tests::Intercept(
        sqlite3_bind_double, "sqlite3_bind_double", [&] { return tests::Bound(index, value); }, statement, index,
        value);
}

int sqlite3_bind_text(sqlite3_stmt* statement, int index, const char* data, int count,
                      sqlite3_destructor_type destructor)
{
    return tests::Intercept(
        sqlite3_bind_text, "sqlite3_bind_text", [&] { return tests::Bound(index, data, count, destructor); }, statement,
        index, data, count, destructor);
}

int sqlite3_bind_blob(sqlite3_stmt* statement, int index, const void* data, int count,
                      sqlite3_destructor_type destructor)
{
    return tests::Intercept(
        sqlite3_bind_blob, "sqlite3_bind_blob", [&] { return tests::Bound(index, data, count, destructor); }, statement,
        index, data, count, destructor);
}

int sqlite3_clear_bindings(sqlite3_stmt* statement)
{
    return tests::Intercept(sqlite3_clear_bindings, "sqlite3_clear_bindings", tests::NoArguments, statement);
}

int sqlite3_step(sqlite3_stmt* statement)
{
    return tests::Intercept(sqlite3_step, "sqlite3_step", tests::NoArguments, statement);
}

int sqlite3_reset(sqlite3_stmt* statement)
{
    return tests::Intercept(sqlite3_reset, "sqlite3_reset", tests::NoArguments, statement);
}

int sqlite3_finalize(sqlite3_stmt* statement)
{
    return tests::Intercept(
        sqlite3_finalize, "sqlite3_finalize", [&] { return "(" + tests::Given(statement, "statement") + ")"; },
        statement);
}

int sqlite3_column_count(sqlite3_stmt* statement)
{
    return tests::Intercept(sqlite3_column_count, "sqlite3_column_count", tests::NoArguments, statement);
}

const char* sqlite3_column_name(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_name, "sqlite3_column_name", [&] { return tests::Column(column); }, statement, column);
}

int sqlite3_column_type(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_type, "sqlite3_column_type", [&] { return tests::Column(column); }, statement, column);
}

int sqlite3_column_bytes(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_bytes, "sqlite3_column_bytes", [&] { return tests::Column(column); }, statement, column);
}

int sqlite3_column_int(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_int, "sqlite3_column_int", [&] { return tests::Column(column); }, statement, column);
}

sqlite3_int64 sqlite3_column_int64(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_int64, "sqlite3_column_int64", [&] { return tests::Column(column); }, statement, column);
}

double sqlite3_column_double(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_double, "sqlite3_column_double", [&] { return tests::Column(column); }, statement, column);
}

const unsigned char* sqlite3_column_text(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_text, "sqlite3_column_text", [&] { return tests::Column(column); }, statement, column);
}

const void* sqlite3_column_blob(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_blob, "sqlite3_column_blob", [&] { return tests::Column(column); }, statement, column);
}

sqlite3_value* sqlite3_column_value(sqlite3_stmt* statement, int column)
{
    return tests::Intercept(
        sqlite3_column_value, "sqlite3_column_value", [&] { return tests::Column(column); }, statement, column);
}

int sqlite3_value_type(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_type, "sqlite3_value_type", tests::NoArguments, value);
}

int sqlite3_value_bytes(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_bytes, "sqlite3_value_bytes", tests::NoArguments, value);
}

int sqlite3_value_int(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_int, "sqlite3_value_int", tests::NoArguments, value);
}

sqlite3_int64 sqlite3_value_int64(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_int64, "sqlite3_value_int64", tests::NoArguments, value);
}

double sqlite3_value_double(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_double, "sqlite3_value_double", tests::NoArguments, value);
}

const unsigned char* sqlite3_value_text(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_text, "sqlite3_value_text", tests::NoArguments, value);
}

const void* sqlite3_value_blob(sqlite3_value* value)
{
    return tests::Intercept(sqlite3_value_blob, "sqlite3_value_blob", tests::NoArguments, value);
}

} // extern "C"
