#pragma once

#include <string>

namespace Morvik::sql {

class SqlDatabase;
class SqlError;

/// What SqlCommand::Execute() does, with the error of the caller. The facade runs one text per operation and needs no
/// command for it, because the private state of a command is allocated.
bool ExecuteText(SqlDatabase& database, const std::string& sql, SqlError& error);

} // namespace Morvik::sql
