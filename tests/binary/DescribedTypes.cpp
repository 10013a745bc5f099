// Part of the library that is described, not of the one that ships. A description holds the types that exported
// functions take or return; these stand only inside containers, which are described by their names alone.
#include <sql/DbTableColumnDefinition.h>
#include <sql/DbTableColumnValue.h>

namespace Morvik::sql {

__attribute__((visibility("default"))) void DescribeTypes(const DbTableColumnValue& /*cell*/,
                                                          const DbTableColumnDefinition& /*column*/,
                                                          DbTableColumnConstraint /*constraint*/)
{}

} // namespace Morvik::sql
