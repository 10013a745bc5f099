#pragma once

#include <cstdlib>

namespace Morvik::sql::tests {

/// Whether the environment sets TKOSQLLITE_SOAK, as scripts/soak.sh does.
inline bool SoakIsOn()
{
    return std::getenv("TKOSQLLITE_SOAK") != nullptr;
}

/// The number of rounds of a repeated trial: few in an ordinary test run, many in a soak.
inline int Rounds(int inTheSuite, int inTheSoak)
{
    return SoakIsOn() ? inTheSoak : inTheSuite;
}

} // namespace Morvik::sql::tests
