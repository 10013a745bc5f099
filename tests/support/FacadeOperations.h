#pragma once

#include <sql/DatabaseApi.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/Choices.h"
#include "support/FacadeModel.h"

namespace Morvik::sql::tests {

/// Runs chosen operations on a facade and on its model side by side, each with files of its own.
class FacadeOperations {
public:
    /// The global locale belongs to all threads: a test with several of them must leave it unchanged.
    enum class GlobalLocale { Chosen, Unchanged };

    /// Puts the files below `directory`. Some writes are under a chosen locale, unless it must stay unchanged.
    explicit FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale = GlobalLocale::Chosen);

    /// Runs one operation on both. Returns an empty text when results, code, message, rows and state agree, and
    /// otherwise what differs.
    std::string RunOne(Choices& choices);

    /// Ends both and compares what their files hold.
    std::string CompareFiles();

private:
    struct Place {
        std::string facadePath;
        std::string modelPath;
        bool directoryFails;
    };

    std::string Open(Choices& choices);
    std::string Manage(Choices& choices);
    std::string Write(Choices& choices);
    std::string Read(Choices& choices);
    std::string Walk(Choices& choices);
    std::string State(const std::string& operation) const;

    template <typename Result>
    std::string Compared(const std::string& operation, const Result& actual, const Result& expected) const;

    GlobalLocale m_locale;
    std::vector<Place> m_places;
    std::unique_ptr<DatabaseApi> m_facade = std::make_unique<DatabaseApi>();
    std::unique_ptr<FacadeModel> m_model = std::make_unique<FacadeModel>();
    DbTableRowIterator m_iterator;
    DbTableRowValues m_row;
    DescribedRow m_modelRow;
};

} // namespace Morvik::sql::tests
