#include "support/ExecutedTexts.h"

#include "support/Require.h"

#include <sqlite3.h>

namespace Morvik::sql::bench {

namespace {

std::vector<std::string> texts;

int Keep(unsigned int, void*, void* statement, void*)
{
    texts.emplace_back(sqlite3_sql(static_cast<sqlite3_stmt*>(statement)));
    return 0;
}

int TraceNewConnection(sqlite3* handle, char**, const void*)
{
    return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, Keep, nullptr);
}

void (*Extension())()
{
    return reinterpret_cast<void (*)()>(TraceNewConnection);
}

} // namespace

ExecutedTexts::ExecutedTexts()
{
    texts.clear();
    Require(sqlite3_auto_extension(Extension()) == SQLITE_OK, "trace new connections");
}

ExecutedTexts::~ExecutedTexts()
{
    sqlite3_cancel_auto_extension(Extension());
}

const std::vector<std::string>& ExecutedTexts::Texts() const
{
    return texts;
}

} // namespace Morvik::sql::bench
