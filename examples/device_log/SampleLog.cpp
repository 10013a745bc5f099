#include "device_log/SampleLog.h"

#include "common/Cells.h"

namespace examples {

using Morvik::sql::DbTableColumnType;
using Morvik::sql::DbTableDataWrite;
using Morvik::sql::DbTableDefinition;
using Morvik::sql::NotNull;
using Morvik::sql::PrimaryKey;

namespace {

constexpr int ApplicationId = 0x646C6F67; // "dlog"

} // namespace

SampleLog::SampleLog(const std::string& path, int keep) : m_database(path, ApplicationId), m_keep(keep)
{
    DbTableDefinition definition;
    definition.name = "sample";
    definition.columns = {
        {"id", DbTableColumnType::Integer, 0, PrimaryKey},
        {"time", DbTableColumnType::UnixTimeNow, 0, NotNull},
        {"load", DbTableColumnType::Real, 0, NotNull},
        {"memory_used", DbTableColumnType::Integer, 0, NotNull},
        {"memory_total", DbTableColumnType::Integer, 0, NotNull},
        {"disk_used", DbTableColumnType::Real, 0, NotNull},
        {"uptime", DbTableColumnType::Integer, 0, NotNull},
    };
    m_database.Require(m_database.Api().CreateTable(definition), "create the table in");
}

void SampleLog::Add(const Sample& sample)
{
    DbTableDataWrite data;
    data.columns = {"time", "load", "memory_used", "memory_total", "disk_used", "uptime"};
    data.rows.push_back({{UnixTimeCell(), RealCell(sample.load), IntegerCell(sample.memoryUsed),
                          IntegerCell(sample.memoryTotal), RealCell(sample.diskUsed), IntegerCell(sample.uptime)}});

    Transaction transaction(m_database);
    m_database.Require(m_database.Api().WriteTableValues("sample", data), "write a sample to");
    // Samples only ever leave from the front, so their ids have no gaps.
    m_database.Execute("DELETE FROM sample WHERE id <= (SELECT max(id) FROM sample) - " + std::to_string(m_keep),
                       "drop old samples from");
    transaction.Commit();
}

int SampleLog::Size()
{
    return m_database.Count("sample", "");
}

} // namespace examples
