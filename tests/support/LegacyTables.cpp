#include "tests/support/LegacyTables.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace test {

using nlohmann::json;

json& LegacyTables::AddOrder(const std::string& zvKey, const json& values) {
  json& order = m_oContent["orders"].emplace_back(values);
  order["DATETIME"] = zvKey;
  return order;
}

json& LegacyTables::AddLine(const std::string& zvKey, const std::string& zvItemNumber, const json& values) {
  json& line = m_oContent["lines"].emplace_back(values);
  line["DATETIME"] = zvKey;
  line["ITEMNUM"] = zvItemNumber;
  return line;
}

void LegacyTables::Type(const std::string& zvColumn, const std::string& zvType) {
  m_oContent["types"][zvColumn] = zvType;
}

void LegacyTables::Without(const std::string& zvColumn) {
  m_oContent["without"] = zvColumn;
}

std::string LegacyTables::Make() const {
  const std::string zContent = m_oFolder.File("content.json");
  std::ofstream(zContent) << m_oContent;
  const std::string zFolder = m_oFolder.File("tables");
  const std::string zCommand = "/usr/bin/python3 " QM_ORDERING_SOURCE_DIR
                               "/tests/support/make-legacy-tables '" +
                               zFolder + "' '" + zContent + "'";
  if (std::system(zCommand.c_str()) != 0) {
    throw std::runtime_error("The tables could not be made: " + zCommand);
  }
  return zFolder;
}

}  // namespace test
