#pragma once

#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

inline constexpr auto& PlainLiteral = ReferenceLiteral;
inline constexpr auto& PlainColumnConstraints = ReferenceColumnConstraints;
inline constexpr auto& PlainColumn = ReferenceColumn;
inline constexpr auto& PlainForeignKey = ReferenceForeignKey;
inline constexpr auto& PlainTableConstraints = ReferenceTableConstraints;
inline constexpr auto& PlainCreateStatement = ReferenceCreateStatement;

} // namespace Morvik::sql::tests
