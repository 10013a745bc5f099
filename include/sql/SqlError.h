#pragma once

#include <sql/Config.h>

#include <cstdint>
#include <string>
#include <utility>

namespace Morvik::sql {

/// The error record of the access layer: the result code of the last recorded call and the message that belongs to it.
/// Every connection, statement, cursor and value has exactly one. Nothing in the layer throws for an SQL or file
/// failure, so the reason for a false return is read here. Operations that need an open cursor or a statement and have
/// none return false and leave the record unchanged.
///
/// Codes are SQLite's primary result codes, passed through unchanged, or the library's result codes: 111 a database or
/// query is not open, or a directory cannot be made, 112 a needed argument or value is missing or unusable, 113 a named
/// table does not exist; see @ref codes "codes and messages". A new record holds code 0 and an empty message.
///
///     if (!database.Open(path, false)) {
///         std::fprintf(stderr, "%d %s\n", database.GetLastError(), database.GetLastErrorMsg().c_str());
///     }
///
/// A record belongs to one thread at a time.
/// @ingroup wrappers
class TKOSQLLITE_EXPORT SqlError {
public:
    /// @name The last call
    /// @{

    /// The code of the last recorded call; 0 in a new record.
    int GetLastError() const { return m_code; }

    /// The text that belongs to the code; empty when the code needs no text. The reference stays valid during the
    /// lifetime of the record; its content changes with the next recorded call.
    const std::string& GetLastErrorMsg() const { return m_message; }

    /// True exactly for the codes 0 (OK), 100 (a row is available) and 101 (no more rows).
    bool Succeeded() const { return m_code == Ok || m_code == Row || m_code == Done; }

    /// The negation of Succeeded(); a negative code counts as failed.
    bool Failed() const { return !Succeeded(); }

    /// True exactly for code 100: the last step returned a row.
    bool HasRowData() const { return m_code == Row; }
    /// @}

    /// @name Setting
    /// @{

    /// Stores the code and empties the message, so that no success carries the text of an earlier failure.
    void SetError(int code)
    {
        m_code = code;
        m_message.clear();
    }

    /// Stores the message and leaves the code unchanged.
    void SetErrorMsg(std::string message) { m_message = std::move(message); }
    /// @}

protected:
    /// Stores the code and keeps the earlier message. The statement class records preparing, binding, resetting and
    /// finalizing this way; callers rely on the earlier message still being readable afterwards.
    void SetErrorKeepingMessage(int code) { m_code = code; }

    // The codes that count as success, with SQLite's numbers.
    static constexpr std::int32_t Ok = 0;     ///< The call succeeded.
    static constexpr std::int32_t Row = 100;  ///< A step returned a row.
    static constexpr std::int32_t Done = 101; ///< A step found no more rows.

private:
    std::int32_t m_code = Ok;
    std::string m_message;
};

} // namespace Morvik::sql
