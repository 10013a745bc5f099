#pragma once

#include <sql/DatabaseApi.h>

#include <string>

#include "support/FacadeModel.h"

namespace Morvik::sql::tests {

/// The result of one step of a scenario.
struct StepOutcome {
    bool succeeded = false;

    /// Result, code, message and rows in one text.
    std::string text;
};

/// One of the two implementations that do the same steps with the same fault: the library, and raw SQLite.
class StorageSide {
public:
    virtual ~StorageSide() = default;

    virtual StepOutcome Open(const std::string& path, bool readOnly) = 0;
    virtual StepOutcome Create(const DbTableDefinition& definition) = 0;
    virtual StepOutcome Write(const std::string& table, const DbTableDataWrite& data) = 0;
    virtual StepOutcome Update(const std::string& table, const DbTableDataWrite& data,
                               const std::string& condition) = 0;
    virtual StepOutcome Alter(const std::string& table, const std::string& newName) = 0;
    virtual StepOutcome Drop(const std::string& table) = 0;
    virtual StepOutcome Execute(const std::string& sql) = 0;
    virtual StepOutcome Exists(const std::string& table) = 0;
    virtual StepOutcome Count(const std::string& table) = 0;
    virtual StepOutcome Read(const std::string& sql) = 0;

    /// A query read with ReadNextRow() to its end.
    virtual StepOutcome Walk(const std::string& sql) = 0;

    /// A query read with the iterator.
    virtual StepOutcome Iterate(const std::string& sql) = 0;

    /// A statement with one parameter, a text: it is prepared, bound, stepped to its end and finalized.
    virtual StepOutcome RunPrepared(const std::string& sql, const std::string& parameter) = 0;

    /// Releases the cursor and closes the database.
    virtual StepOutcome Close() = 0;
};

class LibrarySide : public StorageSide {
public:
    StepOutcome Open(const std::string& path, bool readOnly) override;
    StepOutcome Create(const DbTableDefinition& definition) override;
    StepOutcome Write(const std::string& table, const DbTableDataWrite& data) override;
    StepOutcome Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition) override;
    StepOutcome Alter(const std::string& table, const std::string& newName) override;
    StepOutcome Drop(const std::string& table) override;
    StepOutcome Execute(const std::string& sql) override;
    StepOutcome Exists(const std::string& table) override;
    StepOutcome Count(const std::string& table) override;
    StepOutcome Read(const std::string& sql) override;
    StepOutcome Walk(const std::string& sql) override;
    StepOutcome Iterate(const std::string& sql) override;
    StepOutcome RunPrepared(const std::string& sql, const std::string& parameter) override;
    StepOutcome Close() override;

private:
    StepOutcome Outcome(bool succeeded, const std::string& rows = {}) const;

    DatabaseApi m_facade;
};

class PlainSide : public StorageSide {
public:
    StepOutcome Open(const std::string& path, bool readOnly) override;
    StepOutcome Create(const DbTableDefinition& definition) override;
    StepOutcome Write(const std::string& table, const DbTableDataWrite& data) override;
    StepOutcome Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition) override;
    StepOutcome Alter(const std::string& table, const std::string& newName) override;
    StepOutcome Drop(const std::string& table) override;
    StepOutcome Execute(const std::string& sql) override;
    StepOutcome Exists(const std::string& table) override;
    StepOutcome Count(const std::string& table) override;
    StepOutcome Read(const std::string& sql) override;
    StepOutcome Walk(const std::string& sql) override;
    StepOutcome Iterate(const std::string& sql) override;
    StepOutcome RunPrepared(const std::string& sql, const std::string& parameter) override;
    StepOutcome Close() override;

private:
    StepOutcome Outcome(bool succeeded, const std::string& rows = {}) const;

    FacadeModel m_model;
};

} // namespace Morvik::sql::tests
