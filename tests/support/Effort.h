#pragma once

#include <cstdlib>

namespace Morvik::sql::tests {

/// How much of a repeated trial a test makes: few rounds with every run of the tests, many where the environment sets
/// TKOSQLLITE_SOAK, as scripts/soak.sh does.
inline bool SoakIsOn()
{
    return std::getenv("TKOSQLLITE_SOAK") != nullptr;
}

inline int Rounds(int inTheSuite, int inTheSoak)
{
    return SoakIsOn() ? inTheSoak : inTheSuite;
}

} // namespace Morvik::sql::tests
