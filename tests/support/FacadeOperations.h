#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "support/FacadeDriver.h"
#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// Runs random operations on the facade and on its reference implementation, each with separate files.
class FacadeOperations {
public:
    /// The global locale belongs to all threads: a test with several of them must leave it unchanged.
    enum class GlobalLocale { Chosen, Unchanged };

    /// Creates the files in `directory`. With GlobalLocale::Chosen, some writes run with a random global locale.
    explicit FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale = GlobalLocale::Chosen);

    /// Runs one operation on the facade and on the reference. Returns an empty text if the outcomes are equal, and
    /// otherwise the difference.
    std::string RunOne(FuzzInput& choices);

    /// Destroys the facade and the reference, and compares the content of their files.
    std::string CompareFiles();

private:
    std::string Open(FuzzInput& choices);
    std::string Manage(FuzzInput& choices);
    std::string Write(FuzzInput& choices);
    std::string Read(FuzzInput& choices);
    std::string Walk(FuzzInput& choices);

    template <typename Step>
    std::string Compare(const Step& step);

    GlobalLocale m_locale;
    std::string m_libraryDirectory;
    std::string m_referenceDirectory;
    std::optional<FacadeDriver<DatabaseApi>> m_library;
    std::optional<FacadeDriver<ReferenceFacade>> m_reference;
};

} // namespace Morvik::sql::tests
