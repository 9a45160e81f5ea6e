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

void LegacyTables::Kind(const std::string& zvKind) {
  m_oContent["kind"] = zvKind;
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

const char* const kImportStatement =
    " SELECT PODTLHIS.DATETIME, POHDRHIS.PONUM, POHDRHIS.STADDRESS1,  "
    "POHDRHIS.STADDRESS2, POHDRHIS.STADDRESS3,  "
    "POHDRHIS.STCITY, POHDRHIS.STSTATE, POHDRHIS.STZIP, "
    "POHDRHIS.STATTN, POHDRHIS.BTADDRESS1, POHDRHIS.BTADDRESS2, "
    "POHDRHIS.BTADDRESS3, POHDRHIS.BTCITY, POHDRHIS.BTSTATE, "
    "POHDRHIS.BTZIP, POHDRHIS.BTATTN, POHDRHIS.SPECIALINS, "
    "POHDRHIS.STATUS, POHDRHIS.ORDDATE, POHDRHIS.VENDOR, "
    "POHDRHIS.POTOTAL, POHDRHIS.TAXNO, POHDRHIS.ORDRDBY, "
    "POHDRHIS.BTTELEPHON, POHDRHIS.STTELEPHON, "
    "POHDRHIS.ACCTNUMBER, POHDRHIS.TAXFLAG, POHDRHIS.SHIPORPICK, "
    "POHDRHIS.CREDITCARD, POHDRHIS.EXPIREDATE, POHDRHIS.PORELEASE, "
    "POHDRHIS.DEPARTMENT, POHDRHIS.PROJECTJOB, "
    "POHDRHIS.REQAPPNAME, POHDRHIS.ORDBYPHEXT, "
    "POHDRHIS.CCTYPE, POHDRHIS.COMMENTS1, POHDRHIS.COMMENTS2, "
    "POHDRHIS.PROCREFNO, POHDRHIS.PROCCOMMT1, "
    "POHDRHIS.PROCCOMMT2, POHDRHIS.PROCCOMMT3, "
    "POHDRHIS.PROCCOMMT4, POHDRHIS.PADATE, POHDRHIS.PATIME, "
    "POHDRHIS.BTPROVINCE, POHDRHIS.STPROVINCE, "
    "POHDRHIS.BTCOUNTRY, POHDRHIS.STCOUNTRY, POHDRHIS.POTYPE, "
    "PODTLHIS.ITEMNUM, PODTLHIS.QUANTITY, PODTLHIS.UNITPRICE, "
    "PODTLHIS.EXTPRICE, PODTLHIS.DESC, PODTLHIS.LINENUM, "
    "PODTLHIS.DATE, PODTLHIS.MSDS, PODTLHIS.TAXABLE, PODTLHIS.CUSTNUMBER, "
    "PODTLHIS.ITEMMEMO, PODTLHIS.COMMENTS1, PODTLHIS.COMMENTS2, "
    "PODTLHIS.MODELNUM , PODTLHIS.MFGNAME "
    "FROM PODTLHIS INNER JOIN POHDRHIS ON PODTLHIS.DATETIME = POHDRHIS.DATETIME "
    " ORDER BY POHDRHIS.DATETIME, PODTLHIS.ITEMNUM;";

const std::string& SmallLegacyTables() {
  static LegacyTables tables;
  static const std::string zFolder = [] {
    int lLine = 0;
    for (int lOrder = 1; lOrder <= kSmallOrders; ++lOrder) {
      const std::string zOrder = std::to_string(lOrder);
      tables.AddOrder(zOrder, {{"PONUM", "PO-" + zOrder},
                               {"STADDRESS1", "A street of some length " + zOrder},
                               {"STADDRESS2", "Hall " + zOrder},
                               {"STADDRESS3", "Gate " + zOrder},
                               {"STATTN", "Mary Ann Smith"},
                               {"ORDDATE", "7/" + zOrder + "/2003"},
                               {"POTOTAL", "1,234.5" + zOrder}});
      // One line, two, and four.
      for (const int lEnd = (1 << lOrder) - 1; lLine < lEnd; ++lLine) {
        tables.AddLine(zOrder, "OLD-" + std::to_string(lLine % 4),
                       {{"QUANTITY", std::to_string(lLine)},
                        {"UNITPRICE", "$12.5"},
                        {"DESC", "What the line " + std::to_string(lLine) + " is, in some words"}});
      }
    }
    return tables.Make();
  }();
  return zFolder;
}

}  // namespace test
