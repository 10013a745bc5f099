#pragma once

#include <cstdlib>

namespace Morvik::sql::tests {

/// The number of rounds of a repeated trial: few in an ordinary test run, many if the environment sets TKOSQLLITE_SOAK,
/// as scripts/soak.sh does.
inline bool SoakIsOn()
{
    return std::getenv("TKOSQLLITE_SOAK") != nullptr;
}

inline int Rounds(int inTheSuite, int inTheSoak)
{
    return SoakIsOn() ? inTheSoak : inTheSuite;
}

} // namespace Morvik::sql::tests
