#pragma once

#include <shapefil.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace bench {

// Makes the older program's two tables in the folder zvFolder, with that many lines, five an order. The
// orders come by their key, the lines of each by item number. One line in twenty repeats an earlier item
// number.
void MakeLegacyTables(const std::string& zvFolder, std::int32_t lvLines);

// The values of the store's columns that an order or a line fills, in the order of the statements below.
struct LegacyRow {
  std::string Key;                 // of the order
  std::string ItemNumber;          // of a line
  std::vector<std::string> Texts;  // an empty one is to be null
  std::vector<std::int64_t> Numbers;
};

// Its parameters are the texts of the order, then the numbers.
std::string InsertLegacyOrder();
// Its parameters are the order's id, the item number, the texts of the line, the numbers.
std::string InsertLegacyLine();
inline constexpr const char* kHasItem = "select 1 from tblOrderItem where zItemNumber = :item limit 1";

// Reads the tables as a program without the library does: each in sequence, with shapelib, what is needed of
// a row into strings and numbers. It relies on the sequence in which they were written.
class LegacyReader {
 public:
  explicit LegacyReader(const std::string& zvFolder);

  // Rows to be read into; their vectors keep their sizes.
  static LegacyRow EmptyOrder();
  static LegacyRow EmptyLine();
  // The next row; false behind the last.
  bool NextOrder(LegacyRow& orOrder);
  bool NextLine(LegacyRow& orLine);

 private:
  struct CloseTable {
    void operator()(DBFInfo* pTable) const;
  };
  using Table = std::unique_ptr<DBFInfo, CloseTable>;
  struct Fields {
    std::vector<int> Texts, Numbers;
  };

  Table m_oOrders, m_oLines;
  int m_lOrders = 0, m_lLines = 0;  // how many there are
  int m_lOrder = 0, m_lLine = 0;    // the next one
  Fields m_oOrderFields, m_oLineFields;
};

// The item numbers under which lines are stored: one that is there already gets a marker.
class ItemMarker {
 public:
  std::string Mark(const std::string& zvItemNumber, bool bvStored) {
    if (!bvStored) {
      m_lMarked = 0;
      return zvItemNumber;
    }
    ++m_lMarked;
    return zvItemNumber + " DUP " + (m_lMarked == 1 ? "" : "(" + std::to_string(m_lMarked) + ")");
  }

 private:
  int m_lMarked = 0;
};

}  // namespace bench
