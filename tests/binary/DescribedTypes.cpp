// Part of a library that is built only for the ABI description and is not released. The description contains the types
// that exported functions take or return. The types below occur only inside containers, which are described by their
// names alone.
#include <sql/DbTableColumnDefinition.h>
#include <sql/DbTableColumnValue.h>

namespace Morvik::sql {

__attribute__((visibility("default"))) void DescribeTypes(const DbTableColumnValue& /*cell*/,
                                                          const DbTableColumnDefinition& /*column*/,
                                                          DbTableColumnConstraint /*constraint*/)
{}

} // namespace Morvik::sql
