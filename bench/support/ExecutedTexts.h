#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::bench {

/// Keeps the text of every statement that is run on a connection which was opened while the object lives, and which is
/// closed before its end.
class ExecutedTexts {
public:
    ExecutedTexts();
    ~ExecutedTexts();

    ExecutedTexts(const ExecutedTexts&) = delete;
    ExecutedTexts& operator=(const ExecutedTexts&) = delete;

    const std::vector<std::string>& Texts() const;
};

} // namespace Morvik::sql::bench
