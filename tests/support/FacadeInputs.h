#pragma once

#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>

#include <string>

#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

// Arguments for facade operations, including unusual ones.
std::string ChosenTable(FuzzInput& choices);
std::string ChosenCommand(FuzzInput& choices);
std::string ChosenQuery(FuzzInput& choices);
std::string ChosenCondition(FuzzInput& choices);
DbTableDefinition ChosenDefinition(FuzzInput& choices);
DbTableDataWrite ChosenData(FuzzInput& choices);

} // namespace Morvik::sql::tests
