#pragma once

#include <string>
#include <vector>

#include "bench/Line.h"

namespace bench {

// Makes the folder, with a settings file that names it and a store whose one current order has these lines.
void MakeStore(const std::string& zvFolder, const std::vector<Line>& lines);

// Adds the lines to the order of number 1, all in one transaction.
void FillStore(const std::string& zvFolder, const std::vector<Line>& lines);

}  // namespace bench
