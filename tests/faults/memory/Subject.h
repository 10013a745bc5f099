#pragma once

#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Morvik::sql::tests {

/// The result of an operation, stored without allocating.
class Report {
public:
    Report() = default;
    Report(bool done, int code, std::string_view message);

    bool Done() const { return m_done; }
    int Code() const { return m_code; }

    /// The first bytes of the message, enough to identify it.
    std::string_view Message() const { return m_message.data(); }

private:
    bool m_done = false;
    int m_code = 0;
    std::array<char, 80> m_message{};
};

/// Whether the operation succeeded, and the record of the object that it was called on.
template <typename Recorded>
Report ReportOf(bool done, const Recorded& recorded)
{
    return {done, recorded.GetLastError(), recorded.GetLastErrorMsg()};
}

/// The objects that a scenario uses, and the data that it read. They are members, so that they can be checked when
/// memory is available again, and so that their memory is counted.
struct Subject {
    /// A subject whose database file is `file`; it may create other files in the same directory.
    explicit Subject(const std::filesystem::path& file) : path(file.string()), directory(file.parent_path()) {}

    /// Destroys the objects of the library in the required order.
    void DestroyObjects();

    void ForgetWhatWasRead();

    /// The data that was read, as a text to compare.
    std::string WhatWasRead() const;

    std::string path;
    std::filesystem::path directory;

    /// How often the scenario has succeeded.
    int timesDone = 0;

    std::optional<SqlDatabase> connection;
    std::optional<SqlCommand> command;
    std::optional<SqlTable> cursor;

    std::optional<DatabaseApi> facade;
    std::optional<SqlCommand> statement;

    DbTableDefinition definition;
    DbTableDataWrite write;

    DbTableData data;
    DbTableRowValues row;
    std::string text;
    std::string otherText;
    std::vector<char> bytes;
    long long integer = 0;
    double real = 0;
    int result = 0;
};

} // namespace Morvik::sql::tests
