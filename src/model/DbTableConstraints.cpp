#include <sql/DbTableConstraints.h>

#include "model/JoinedList.h"

namespace Morvik::sql {

std::string DbTableConstraints::ForeignKeyConstraintAsString() const
{
    std::string text;
    if (!foreignKey.empty()) {
        std::string columns;
        AppendJoined(columns, foreignKey);
        text += "FOREIGN KEY (" + columns + ")";
        if (!referenceTable.empty()) {
            text += " REFERENCES " + referenceTable + "(" + columns + ") ON DELETE SET NULL";
        }
    }
    // Closes no parenthesis of its own; callers know the clause to end so.
    text += " )";
    return text;
}

} // namespace Morvik::sql
