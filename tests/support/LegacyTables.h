#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/TempFolder.h"

namespace test {

// The tables of the older program, made by python3-dbf in a folder of their own. What is not set is blank.
class LegacyTables {
 public:
  // Adds an order, or a line, with the values of these columns. Answers it, to be added to.
  nlohmann::json& AddOrder(const std::string& zvKey, const nlohmann::json& values = nlohmann::json::object());
  nlohmann::json& AddLine(const std::string& zvKey, const std::string& zvItemNumber,
                          const nlohmann::json& values = nlohmann::json::object());
  // The field of a column, "TABLE.COLUMN", that is no text: "N(10,2)", "D", "L".
  void Type(const std::string& zvColumn, const std::string& zvType);
  // The tables of another program, as python3-dbf calls it: "vfp" for Visual FoxPro's.
  void Kind(const std::string& zvKind);
  // Leaves a column out.
  void Without(const std::string& zvColumn);

  // Makes the files and answers their folder.
  std::string Make() const;

 private:
  TempFolder m_oFolder;
  nlohmann::json m_oContent = {{"orders", nlohmann::json::array()}, {"lines", nlohmann::json::array()}};
};

// The statement by which the import reads them.
extern const char* const kImportStatement;

// The folder of tables with three orders, PO-1 to PO-3, of seven lines, three of which are to be marked. Made
// at the first call, for the rest of the run.
const std::string& SmallLegacyTables();
constexpr int kSmallOrders = 3;
constexpr int kSmallLines = 7;

}  // namespace test
