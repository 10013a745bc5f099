#include <sql/DbTableDefinition.h>

#include <string_view>

#include "model/Strings.h"

namespace Morvik::sql {

namespace {

// Each element of the list is one character, the name of a key column.
void AppendKey(std::string& list, std::string_view keyword, const std::vector<char>& columns)
{
    if (columns.empty()) {
        return;
    }
    StrAppendItem(list, keyword);
    list += " (";
    StrAppendJoin(list, columns);
    list += ") ON CONFLICT IGNORE";
}

} // namespace

std::string DbTableDefinition::TableConstraintAsString() const
{
    std::string list;
    AppendKey(list, "PRIMARY KEY", constraints.primaryKey);
    AppendKey(list, "UNIQUE", constraints.unique);

    // Without a referenced table, a foreign key is written only after another constraint.
    const bool listed = !list.empty() || !constraints.referenceTable.empty();
    if (listed && !constraints.foreignKey.empty()) {
        StrAppendItem(list, constraints.ForeignKeyConstraintAsString());
    }
    return list;
}

} // namespace Morvik::sql
