#include <sql/DbTableConstraints.h>

#include "model/Strings.h"

namespace Morvik::sql {

std::string DbTableConstraints::ForeignKeyConstraintAsString() const
{
    // The last parenthesis has no opening one; callers rely on it.
    if (foreignKey.empty()) {
        return " )";
    }
    std::string columns;
    StrAppendJoin(columns, foreignKey);
    if (referenceTable.empty()) {
        return StrCat({"FOREIGN KEY (", columns, ") )"});
    }
    return StrCat({"FOREIGN KEY (", columns, ") REFERENCES ", referenceTable, "(", columns, ") ON DELETE SET NULL )"});
}

} // namespace Morvik::sql
