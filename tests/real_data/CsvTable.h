#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace test {

// A row of a CSV file: its values by the names in the file's first line. A value that is missing (the word
// NULL) is empty, as it is in an order.
using CsvRow = std::map<std::string, std::string>;

// Reads a UTF-8 CSV file. Throws std::runtime_error for a file that is none.
std::vector<CsvRow> ReadCsv(const std::string& zvPath);

// A number with at most lvDecimals decimals as a whole number of its smallest unit: "9.8", 4 is 98000. Throws
// std::runtime_error for one with more.
std::int64_t WholeUnits(const std::string& zvNumber, std::size_t lvDecimals);

}  // namespace test
