#include "binary/OtherLibrary.h"

#include <sql/DatabaseApi.h>

namespace Morvik::sql::tests {

namespace {

class NotingDatabase : public OtherBase, public IDatabaseApi {
public:
    explicit NotingDatabase(std::vector<std::string>& calls) : m_calls(calls) {}
    ~NotingDatabase() override { m_calls.emplace_back("destructor"); }

    bool OpenDatabase(const std::string&, bool) override { return Note(__func__); }
    bool CloseDatabase() override { return Note(__func__); }
    bool IsOpen() const override { return Note(__func__); }
    bool CreateTable(const DbTableDefinition&) override { return Note(__func__); }
    bool ExistsTable(const std::string&, int&) const override { return Note(__func__); }
    bool DropTable(const std::string&) override { return Note(__func__); }
    bool AlterTable(const std::string&, const std::string&) override { return Note(__func__); }
    bool Execute(const std::string&) override { return Note(__func__); }
    bool WriteTableValues(const std::string&, const DbTableDataWrite&) override { return Note(__func__); }
    bool UpdateTableValues(const std::string&, const DbTableDataWrite&, const std::string&) override
    {
        return Note(__func__);
    }
    bool ReadTableValues(const std::string&, DbTableData&) const override { return Note(__func__); }
    bool ReadValues(const std::string&, DbTableData&) const override { return Note(__func__); }
    int ExistData(const std::string&, const std::string&, int&) override { return Note(__func__) ? 1 : 0; }

private:
    bool Note(const char* operation) const
    {
        m_calls.emplace_back(operation);
        return true;
    }

    std::vector<std::string>& m_calls;
};

} // namespace

OtherBase::~OtherBase() = default;

std::unique_ptr<IDatabaseApi> MakeNotingDatabase(std::vector<std::string>& calls)
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
