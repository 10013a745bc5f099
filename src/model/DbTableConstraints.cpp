#include <sql/DbTableConstraints.h>

#include "model/Concatenated.h"
#include "model/JoinedList.h"

namespace Morvik::sql {

std::string DbTableConstraints::ForeignKeyConstraintAsString() const
{
    std::string columns;
    AppendJoined(columns, foreignKey);

    std::string text;
    if (!foreignKey.empty()) {
        text = Concatenated({"FOREIGN KEY (", columns, ")"});
        if (!referenceTable.empty()) {
            text += Concatenated({" REFERENCES ", referenceTable, "(", columns, ") ON DELETE SET NULL"});
        }
    }
    // Closes no parenthesis of its own; callers know the clause to end so.
    text += " )";
    return text;
}

} // namespace Morvik::sql
