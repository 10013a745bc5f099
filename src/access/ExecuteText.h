#pragma once

#include <string>

namespace Morvik::sql {

class SqlDatabase;
class SqlError;

/// Runs the text on the connection, as SqlCommand::Execute() does, and sets `error`. Returns whether it succeeded. The
/// facade calls this for each text, because a command would allocate its private state.
bool ExecuteText(SqlDatabase& database, const std::string& sql, SqlError& error);

} // namespace Morvik::sql
