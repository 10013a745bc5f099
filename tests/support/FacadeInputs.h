#pragma once

#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>

#include <string>

#include "support/Choices.h"

namespace Morvik::sql::tests {

// Arguments for facade operations, including unusual ones.
std::string ChosenTable(Choices& choices);
std::string ChosenCommand(Choices& choices);
std::string ChosenQuery(Choices& choices);
std::string ChosenCondition(Choices& choices);
DbTableDefinition ChosenDefinition(Choices& choices);
DbTableDataWrite ChosenData(Choices& choices);
DbTableColumnValue ChosenCell(Choices& choices);

} // namespace Morvik::sql::tests
