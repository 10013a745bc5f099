#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::bench {

/// Keeps the text of every statement that runs on a connection. The connection must be opened and closed during the
/// lifetime of this object.
class ExecutedTexts {
public:
    ExecutedTexts();
    ~ExecutedTexts();

    ExecutedTexts(const ExecutedTexts&) = delete;
    ExecutedTexts& operator=(const ExecutedTexts&) = delete;

    const std::vector<std::string>& Texts() const;
};

} // namespace Morvik::sql::bench
