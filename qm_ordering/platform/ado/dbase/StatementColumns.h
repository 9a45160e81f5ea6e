#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qm_ordering::ado::dbase {

// What a statement does with columns, by their names without those of their tables, in its order.
struct StatementColumns {
  std::vector<std::string> Keys;  // set equal to another column: NAME = NAME, each with a table's name or not
  std::vector<std::string> Sorted;  // named behind ORDER BY
};

// Looks through a statement without checking it.
StatementColumns FindColumns(std::string_view zvSQL);

}  // namespace qm_ordering::ado::dbase
