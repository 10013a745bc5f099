#include "binary/OtherLibrary.h"

#include <sql/DatabaseApi.h>

namespace Morvik::sql::tests {

namespace {

class NotingDatabase : public Named, public IDatabaseApi {
public:
    explicit NotingDatabase(std::vector<std::string>& calls) : m_calls(calls) {}
    ~NotingDatabase() override { m_calls.emplace_back("destructor"); }

    std::string Name() const override { return "noting"; }

    bool OpenDatabase(const std::string& /*path*/, bool /*readOnly*/) override { return Note("OpenDatabase"); }
    bool CloseDatabase() override { return Note("CloseDatabase"); }
    bool IsOpen() const override { return Note("IsOpen"); }
    bool CreateTable(const DbTableDefinition& /*definition*/) override { return Note("CreateTable"); }
    bool ExistsTable(const std::string& /*table*/, int& /*result*/) const override { return Note("ExistsTable"); }
    bool DropTable(const std::string& /*table*/) override { return Note("DropTable"); }
    bool AlterTable(const std::string& /*table*/, const std::string& /*newName*/) override
    {
        return Note("AlterTable");
    }
    bool Execute(const std::string& /*sql*/) override { return Note("Execute"); }
    bool WriteTableValues(const std::string& /*table*/, const DbTableDataWrite& /*data*/) override
    {
        return Note("WriteTableValues");
    }
    bool UpdateTableValues(const std::string& /*table*/, const DbTableDataWrite& /*data*/,
                           const std::string& /*condition*/) override
    {
        return Note("UpdateTableValues");
    }
    bool ReadTableValues(const std::string& /*table*/, DbTableData& /*data*/) const override
    {
        return Note("ReadTableValues");
    }
    bool ReadValues(const std::string& /*sql*/, DbTableData& /*data*/) const override { return Note("ReadValues"); }
    int ExistData(const std::string& /*table*/, const std::string& /*condition*/, int& /*result*/) override
    {
        return Note("ExistData") ? 1 : 0;
    }

private:
    bool Note(const char* operation) const
    {
        m_calls.emplace_back(operation);
        return true;
    }

    std::vector<std::string>& m_calls;
};

} // namespace

Named::~Named() = default;

std::unique_ptr<IDatabaseApi> MakeNotingDatabase(std::vector<std::string>& calls)
{
    return std::make_unique<NotingDatabase>(calls);
}

std::unique_ptr<Named> MakeNamedDatabase(std::vector<std::string>& calls)
{
    return std::make_unique<NotingDatabase>(calls);
}

bool IsNotingDatabase(const IDatabaseApi& database)
{
    return dynamic_cast<const NotingDatabase*>(&database) != nullptr;
}

bool IsFacade(const IDatabaseApi& database)
{
    return dynamic_cast<const DatabaseApi*>(&database) != nullptr;
}

std::unique_ptr<IDatabaseApi> MakeFacade()
{
    return std::make_unique<DatabaseApi>();
}

bool CallEveryOperationThere(IDatabaseApi& database)
{
    return CallEveryOperation(database);
}

} // namespace Morvik::sql::tests
