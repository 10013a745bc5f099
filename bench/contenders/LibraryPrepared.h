#pragma once

#include <sql/DatabaseApi.h>

#include <span>
#include <string>
#include <utility>

#include "contenders/BoundContender.h"
#include "support/Require.h"

namespace Morvik::sql::bench {

/// Does the jobs with the facade's prepared statements, as an application does.
class LibraryPrepared : public BoundContender<LibraryPrepared> {
public:
    static constexpr const char* Name = "PrepareStatement";

    explicit LibraryPrepared(const std::string& path) { RequireDone(m_database, m_database.OpenDatabase(path, false)); }

    void Execute(const std::string& sql) { RequireDone(m_database, m_database.Execute(sql)); }

    auto Inserter()
    {
        return [insert = m_database.PrepareStatement(InsertRow)](const SampleRow& row) mutable {
            RequireDone(insert, insert.BindInteger(1, row.number) && insert.BindDouble(2, row.measure) &&
                                    insert.BindText(3, row.label) && insert.BindBlob(4, Bytes(row)) && insert.Step() &&
                                    insert.Reset());
        };
    }

    auto Updater()
    {
        return [update = m_database.PrepareStatement(UpdateRow)](const SampleRow& row) mutable {
            RequireDone(update, update.BindDouble(1, row.measure) && update.BindText(2, row.label) &&
                                    update.BindBlob(3, Bytes(row)) && update.BindInteger(4, row.number) &&
                                    update.Step() && update.Reset());
        };
    }

    auto Finder()
    {
        return [query = m_database.PrepareStatement(SelectRow)](int number, Rows& rows) mutable {
            RequireDone(query, query.BindInteger(1, number));
            ForEachRowOf(query, [&](SampleRow& row) { rows.push_back(std::move(row)); });
        };
    }

    template <typename Action>
    void ForEachRow(const std::string& sql, Action action)
    {
        SqlCommand query = m_database.PrepareStatement(sql);
        ForEachRowOf(query, action);
    }

private:
    template <typename Object>
    static void RequireDone(const Object& object, bool done)
    {
        Require(done, Name, object.GetLastErrorMsg().c_str());
    }

    static std::span<const unsigned char> Bytes(const SampleRow& row)
    {
        return {reinterpret_cast<const unsigned char*>(row.bytes.data()), row.bytes.size()};
    }

    template <typename Action>
    static void ForEachRowOf(SqlCommand& query, Action action)
    {
        SampleRow row;
        while (query.Step() && query.HasRowData()) {
            const std::span<const unsigned char> bytes = query.ColumnBlob(3);
            row.number = query.ColumnInt(0);
            row.measure = query.ColumnDouble(1);
            row.label = query.ColumnText(2);
            row.bytes.assign(bytes.begin(), bytes.end());
            action(row);
        }
        RequireDone(query, query.Reset());
    }

    DatabaseApi m_database;
};

} // namespace Morvik::sql::bench
