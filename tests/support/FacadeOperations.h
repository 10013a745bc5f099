#pragma once

#include <sql/DatabaseApi.h>

#include <filesystem>
#include <memory>
#include <string>

#include "support/FacadeModel.h"
#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// Runs random operations on a facade and on its model, each with separate files.
class FacadeOperations {
public:
    /// The global locale belongs to all threads: a test with several of them must leave it unchanged.
    enum class GlobalLocale { Chosen, Unchanged };

    /// Creates the files in `directory`. Some writes run with a random locale, unless it must stay unchanged.
    explicit FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale = GlobalLocale::Chosen);

    /// Runs one operation on both. Returns an empty text if results, code, message, rows and state are equal, and
    /// otherwise the difference.
    std::string RunOne(FuzzInput& choices);

    /// Destroys both and compares the content of their files.
    std::string CompareFiles();

private:
    struct Place {
        std::string facadePath;
        std::string modelPath;
        bool directoryFails;
    };

    std::string Open(FuzzInput& choices);
    std::string Manage(FuzzInput& choices);
    std::string Write(FuzzInput& choices);
    std::string Read(FuzzInput& choices);
    std::string Walk(FuzzInput& choices);
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
