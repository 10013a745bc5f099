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

/// What an operation left behind, in memory that is always there.
class Report {
public:
    Report() = default;
    Report(bool done, int code, std::string_view message);

    bool Done() const { return m_done; }
    int Code() const { return m_code; }

    /// The first bytes of the message, enough to know it by.
    std::string_view Message() const { return m_message.data(); }

private:
    bool m_done = false;
    int m_code = 0;
    std::array<char, 80> m_message{};
};

/// Whether the operation succeeded, beside the record of the object that it was called on.
template <typename Recorded>
Report ReportOf(bool done, const Recorded& recorded)
{
    return {done, recorded.GetLastError(), recorded.GetLastErrorMsg()};
}

/// What a scenario works on, and what it read. Everything stands here, so that it can be looked at when memory is there
/// again, and so that its memory is counted.
struct Subject {
    /// A subject whose database file is `file`, beside which it may make other files.
    explicit Subject(const std::filesystem::path& file) : path(file.string()), directory(file.parent_path()) {}

    /// Destroys the objects of the library in the order that it asks for.
    void DestroyObjects();

    void ForgetWhatWasRead();

    /// What was read, as a text to compare.
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
