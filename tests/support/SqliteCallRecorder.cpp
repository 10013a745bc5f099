#include "support/SqliteCallRecorder.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include <dlfcn.h>
#include <sqlite3.h>

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
        const auto found = std::ranges::find(replacements, function, &Replacement::function);
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

struct Nested {
    Nested() { ++depth; }
    ~Nested() { --depth; }
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

// Stores null for the object of a call that is not made, as SQLite does when it cannot allocate the object.
template <typename Argument>
void ClearResult(Argument argument)
{
    if constexpr (std::is_same_v<Argument, sqlite3**> || std::is_same_v<Argument, sqlite3_stmt**>) {
        *argument = nullptr;
    }
}

// The arguments are formatted only while recording, because formatting reads the memory that they point to.
template <typename Result, typename... Parameters, typename Details>
Result Intercept(Result (*)(Parameters...), const char* name, const Details& details,
                 std::type_identity_t<Parameters>... arguments)
{
    const auto real = Real<Result(Parameters...)>(name);
    const bool outermost = depth == 0 && state.recording;
    const Nested nested;
    if (!outermost) {
        return real(arguments...);
    }
    state.calls.push_back(name + details());
    if constexpr (!std::is_void_v<Result>) {
        if (const std::optional<Replacement> replacement = state.TakeReplacement(name)) {
            replacement->forward ? static_cast<void>(real(arguments...)) : (ClearResult(arguments), ...);
            if constexpr (std::is_pointer_v<Result>) {
                return nullptr;
            } else {
                return static_cast<Result>(replacement->result);
            }
        }
    }
    return real(arguments...);
}

std::string Text(const char* text)
{
    return text != nullptr ? text : "null";
}

std::string Text(const void* data, int count)
{
    const auto* const text = static_cast<const char*>(data);
    return text == nullptr || count < 0 ? Text(text) : std::string(text, static_cast<std::size_t>(count));
}

std::string Executed(const char* sql)
{
    return state.executed.emplace_back(sql);
}

template <typename Pointee>
std::string Given(Pointee* pointer, const char* what)
{
    return pointer != nullptr ? what : "null";
}

std::string Destructor(sqlite3_destructor_type destructor)
{
    // NOLINTNEXTLINE(performance-no-int-to-ptr): SQLite's own constant
    return destructor == SQLITE_TRANSIENT ? "transient" : "other";
}

std::string Text(const std::string& text)
{
    return text;
}

template <typename Number>
requires std::is_arithmetic_v<Number> std::string Text(Number number)
{
    return std::to_string(number);
}

// The arguments of a call, as they are recorded.
template <typename... Arguments>
std::string List(const Arguments&... arguments)
{
    std::string list = "(";
    [[maybe_unused]] const char* separator = "";
    ((list += separator + Text(arguments), separator = ", "), ...);
    return list + ')';
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
    std::vector<std::string> calls = state.calls;
    std::erase_if(calls, [&](const std::string& call) { return !call.starts_with(function + "("); });
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

// The dynamic linker binds the library's calls to these definitions, because it searches the program first.
namespace tests = Morvik::sql::tests;

// Defines a function of SQLite: its type, name and parameters, the recorded list, and the real call's arguments.
#define RECORD(type, name, parameters, recorded, ...)                                                                  \
    type name parameters                                                                                               \
    {                                                                                                                  \
        return tests::Intercept(                                                                                       \
            name, #name, [&] { return tests::List recorded; }, __VA_ARGS__);                                           \
    }
#define RECORD_HANDLE(type, name) RECORD(type, name, (sqlite3 * handle), (tests::Given(handle, "handle")), handle)
#define RECORD_PREPARE(name)                                                                                           \
    RECORD(int, name, (sqlite3 * handle, const char* sql, int count, sqlite3_stmt** statement, const char** tail),     \
           (tests::Given(handle, "handle"), tests::Text(sql, count),                                                   \
            std::to_string(count) + (tail != nullptr ? ", tail" : "")),                                                \
           handle, sql, count, statement, tail)
#define RECORD_BIND(name, type)                                                                                        \
    RECORD(int, name, (sqlite3_stmt * statement, int index, type value), (index, value), statement, index, value)
#define RECORD_BIND_BYTES(name, type)                                                                                  \
    RECORD(int, name, (sqlite3_stmt * statement, int index, type data, int count, sqlite3_destructor_type destructor), \
           (index, tests::Text(data, count), count, tests::Destructor(destructor)), statement, index, data, count,     \
           destructor)
#define RECORD_STATEMENT(name) RECORD(int, name, (sqlite3_stmt * statement), (), statement)
#define RECORD_COLUMN(type, name)                                                                                      \
    RECORD(type, name, (sqlite3_stmt * statement, int column), (column), statement, column)
#define RECORD_VALUE(type, name) RECORD(type, name, (sqlite3_value * value), (), value)

extern "C" {

RECORD(int, sqlite3_open_v2, (const char* path, sqlite3** handle, int flags, const char* vfs),
       (tests::Text(path), flags, tests::Text(vfs)), path, handle, flags, vfs)
RECORD_HANDLE(int, sqlite3_close)
RECORD_HANDLE(int, sqlite3_close_v2)
RECORD_HANDLE(int, sqlite3_errcode)
RECORD_HANDLE(const char*, sqlite3_errmsg)

RECORD(int, sqlite3_exec,
       (sqlite3 * handle, const char* sql, int (*callback)(void*, int, char**, char**), void* argument, char** text),
       (tests::Given(handle, "handle"), tests::Executed(sql), tests::Given(callback, "callback"),
        tests::Given(argument, "argument")),
       handle, sql, callback, argument, text)
RECORD(void, sqlite3_free, (void* memory), (tests::Given(memory, "memory")), memory)

RECORD_PREPARE(sqlite3_prepare)
RECORD_PREPARE(sqlite3_prepare_v2)
RECORD_BIND(sqlite3_bind_int, int)
RECORD_BIND(sqlite3_bind_int64, sqlite3_int64)
RECORD_BIND(sqlite3_bind_double, double)
RECORD_BIND_BYTES(sqlite3_bind_text, const char*)
RECORD_BIND_BYTES(sqlite3_bind_blob, const void*)
RECORD_STATEMENT(sqlite3_clear_bindings)
RECORD_STATEMENT(sqlite3_step)
RECORD_STATEMENT(sqlite3_reset)
RECORD(int, sqlite3_finalize, (sqlite3_stmt * statement), (tests::Given(statement, "statement")), statement)

RECORD_STATEMENT(sqlite3_column_count)
RECORD_COLUMN(const char*, sqlite3_column_name)
RECORD_COLUMN(int, sqlite3_column_type)
RECORD_COLUMN(int, sqlite3_column_bytes)
RECORD_COLUMN(int, sqlite3_column_int)
RECORD_COLUMN(sqlite3_int64, sqlite3_column_int64)
RECORD_COLUMN(double, sqlite3_column_double)
RECORD_COLUMN(const unsigned char*, sqlite3_column_text)
RECORD_COLUMN(const void*, sqlite3_column_blob)
RECORD_COLUMN(sqlite3_value*, sqlite3_column_value)

RECORD_VALUE(int, sqlite3_value_type)
RECORD_VALUE(int, sqlite3_value_bytes)
RECORD_VALUE(int, sqlite3_value_int)
RECORD_VALUE(sqlite3_int64, sqlite3_value_int64)
RECORD_VALUE(double, sqlite3_value_double)
RECORD_VALUE(const unsigned char*, sqlite3_value_text)
RECORD_VALUE(const void*, sqlite3_value_blob)

} // extern "C"
