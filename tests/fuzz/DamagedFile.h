#pragma once

#include <sql/DatabaseApi.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fuzz/BoundedConnections.h"
#include "support/FacadeModel.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Two copies of one database file with any content: a facade uses one, and a model of the facade, made of raw SQLite
/// calls, uses the other. Every operation runs on both; differences in the result, the record or the rows are reported.
class DamagedFile {
public:
    explicit DamagedFile(std::span<const std::uint8_t> content);

    void Open(bool readOnly);
    void Close();

    void Execute(const std::string& sql);
    void Exists(const std::string& table);
    void Count(const std::string& table, const std::string& condition);
    void Write(const std::string& table, const DbTableDataWrite& data);
    void Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition);
    void Rename(const std::string& table, const std::string& newName);
    void Drop(const std::string& table);

    /// The rows of the query, up to the first failure.
    DbTableData Read(const std::string& sql);
    void ReadTable(const std::string& table);

    /// Reads the query with ReadNextRow() and closes it.
    void Walk(const std::string& sql);

private:
    struct Files {
        TemporaryDirectory directory;
        std::string facadePath = directory.File("facade.db");
        std::string modelPath = directory.File("model.db");
    };

    /// Does the same on both sides and compares the results, the records and the rows.
    template <typename OnFacade, typename OnModel>
    void Compare(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel);

    /// The same, after resetting the limits on the steps: for the first call of an operation.
    template <typename OnFacade, typename OnModel>
    void Both(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel);

    void RequireSameRows(const std::string& operation, const DbTableData& data, const std::vector<DescribedRow>& rows);

    static const Files& OwnFiles();

    BoundedConnections m_connections;
    DatabaseApi m_facade;
    FacadeModel m_model;
};

} // namespace Morvik::sql::tests
