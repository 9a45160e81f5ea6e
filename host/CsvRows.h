#pragma once

#include <string>
#include <vector>

namespace host {

struct CsvRow {
  int Line;  // on which it begins, from 1; lines end in LF, CR LF or CR
  std::vector<std::string> Fields;
};

// The rows of a CSV text, quoted as RFC 4180 says; blank lines do not count. Raises UsageError, which names
// zvFile and the line, where the quoting is broken.
std::vector<CsvRow> ParseCsv(const std::string& zvText, const std::string& zvFile);

}  // namespace host
