#pragma once

#include <memory>
#include <string>

#include <soci/soci.h>

#include "contenders/BoundContender.h"

namespace Morvik::sql::bench {

/// Does the jobs with SOCI: prepared statements that bind and fill variables. SOCI has no bulk operations for blobs,
/// and it cannot read single columns of a stepped statement.
class Soci : public BoundContender<Soci> {
public:
    static constexpr const char* Name = "SOCI";

    static void OpenAndClose(const std::string& path) { const Soci session(path); }

    explicit Soci(const std::string& path);

    void Execute(const std::string& sql) { m_session << sql; }

    auto Inserter()
    {
        const auto values = std::make_shared<Variables>(m_session);
        soci::statement insert = (m_session.prepare << "INSERT INTO sample VALUES (:number,:measure,:label,:bytes)",
                                  soci::use(values->row.number), soci::use(values->row.measure),
                                  soci::use(values->row.label), soci::use(values->blob));
        return [=](const SampleRow& row) mutable {
            values->Assign(row);
            insert.execute(true);
        };
    }

    auto Updater()
    {
        const auto values = std::make_shared<Variables>(m_session);
        soci::statement update =
            (m_session.prepare << "UPDATE sample SET measure=:measure, label=:label, bytes=:bytes WHERE number=:number",
             soci::use(values->row.measure), soci::use(values->row.label), soci::use(values->blob),
             soci::use(values->row.number));
        return [=](const SampleRow& row) mutable {
            values->Assign(row);
            update.execute(true);
        };
    }

    auto Finder()
    {
        const auto values = std::make_shared<Variables>(m_session);
        const auto number = std::make_shared<Query>(0);
        soci::statement query = (m_session.prepare << "SELECT * FROM sample WHERE number=:number", soci::use(*number),
                                 soci::into(values->row.number), soci::into(values->row.measure),
                                 soci::into(values->row.label), soci::into(values->blob));
        return [=](Query wanted, Rows& rows) mutable {
            *number = wanted;
            query.execute();
            while (query.fetch()) {
                rows.push_back(values->Row());
            }
        };
    }

    void ForEachRow(const std::string& sql, auto action)
    {
        Variables values(m_session);
        soci::statement query = (m_session.prepare << sql, soci::into(values.row.number),
                                 soci::into(values.row.measure), soci::into(values.row.label), soci::into(values.blob));
        query.execute();
        while (query.fetch()) {
            action(values.Row());
        }
    }

private:
    // The variables that a statement binds or fills.
    struct Variables {
        explicit Variables(soci::session& session) : blob(session) {}

        SampleRow row;
        soci::blob blob;

        void Assign(const SampleRow& from)
        {
            row.number = from.number;
            row.measure = from.measure;
            row.label = from.label;
            // All blobs have the same size, so no byte of an earlier blob remains.
            blob.write(0, from.bytes.data(), from.bytes.size());
        }

        const SampleRow& Row()
        {
            row.bytes.resize(blob.get_len());
            blob.read(0, row.bytes.data(), row.bytes.size());
            return row;
        }
    };

    soci::session m_session;
};

} // namespace Morvik::sql::bench
