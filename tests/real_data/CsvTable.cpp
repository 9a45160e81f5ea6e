#include "tests/real_data/CsvTable.h"

#include <csv.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include "tests/support/TempFolder.h"

namespace test {

namespace {

using Lines = std::vector<std::vector<std::string>>;

struct Reading {
  Lines All;
  std::vector<std::string> Line;
};

void EndField(void* pText, std::size_t lvSize, void* pReading) {
  static_cast<Reading*>(pReading)->Line.emplace_back(static_cast<const char*>(pText), lvSize);
}

void EndLine(int, void* pReading) {
  auto& reading = *static_cast<Reading*>(pReading);
  reading.All.push_back(std::move(reading.Line));
  reading.Line.clear();
}

Lines ReadLines(const std::string& zvPath) {
  const std::string zText = ReadFile(zvPath);
  csv_parser parser{};
  if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI) != 0) {
    throw std::runtime_error("no CSV parser");
  }
  // Blanks at the ends belong to a value.
  csv_set_space_func(&parser, [](unsigned char) { return 0; });
  Reading reading;
  const bool bRead =
      csv_parse(&parser, zText.data(), zText.size(), EndField, EndLine, &reading) == zText.size() &&
      csv_fini(&parser, EndField, EndLine, &reading) == 0;
  const std::string zWhy = csv_strerror(csv_error(&parser));
  csv_free(&parser);
  if (!bRead) {
    throw std::runtime_error(zvPath + ": " + zWhy);
  }
  return reading.All;
}

}  // namespace

std::vector<CsvRow> ReadCsv(const std::string& zvPath) {
  const Lines lines = ReadLines(zvPath);
  std::vector<CsvRow> rows;
  for (std::size_t lLine = 1; lLine < lines.size(); ++lLine) {
    if (lines[lLine].size() != lines[0].size()) {
      throw std::runtime_error(zvPath + ": row " + std::to_string(lLine) + " has " +
                               std::to_string(lines[lLine].size()) + " values");
    }
    CsvRow row;
    for (std::size_t l = 0; l < lines[0].size(); ++l) {
      row[lines[0][l]] = lines[lLine][l] == "NULL" ? "" : lines[lLine][l];
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

std::int64_t WholeUnits(const std::string& zvNumber, std::size_t lvDecimals) {
  const std::size_t lPoint = std::min(zvNumber.find('.'), zvNumber.size());
  std::string zDecimals = lPoint == zvNumber.size() ? "" : zvNumber.substr(lPoint + 1);
  if (zDecimals.size() > lvDecimals) {
    throw std::runtime_error("too many decimals: " + zvNumber);
  }
  zDecimals.resize(lvDecimals, '0');
  return std::stoll(zvNumber.substr(0, lPoint) + zDecimals);
}

}  // namespace test
