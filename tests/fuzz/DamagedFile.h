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

/// Two copies of one database file, whatever its bytes: a facade works on the one and a model of it, made of plain
/// SQLite calls, on the other. Every operation runs on both and reports what differs in the result, the record or
/// the rows.
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

    /// The rows of the query, as far as they can be read.
    DbTableData Read(const std::string& sql);
    void ReadTable(const std::string& table);

    /// Walks through the query with ReadNextRow() and closes it.
    void Walk(const std::string& sql);

private:
    struct Files {
        TemporaryDirectory directory;
        std::string facadePath = directory.File("facade.db");
        std::string modelPath = directory.File("model.db");
    };

    /// Does the same on both sides and compares the results and what they leave.
    template <typename OnFacade, typename OnModel>
    void Compare(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel);

    /// The same for an operation that begins, with all its steps before it.
    template <typename OnFacade, typename OnModel>
    void Both(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel);

    void RequireSameRows(const std::string& operation, const DbTableData& data, const std::vector<DescribedRow>& rows);

    static const Files& OwnFiles();

    BoundedConnections m_connections;
    DatabaseApi m_facade;
    FacadeModel m_model;
};

} // namespace Morvik::sql::tests
