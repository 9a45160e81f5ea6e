#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/store/Database.h"
#include "tests/support/StoreFixture.h"

namespace test {

qm_ordering::Currency Money(std::string_view zvAmount);

extern const char* const kHighestMoney;  // what the store's 64 bits hold: 922337203685477.5807
extern const char* const kLowestMoney;

// A line as OrderDetails_AddItem takes it; a test sets what it is about.
struct Line {
  std::int32_t OrderID = 12;
  std::string ItemNumber = "A-1";
  std::int32_t Quantity = 1;
  std::string Description, ShortDescription, Manufacturer, Model;
  std::int32_t SellQuantity = 1;
  std::int32_t ShipQuantity = 1;
  std::string UsuallyShips;
  bool IsTaxable = false;
  qm_ordering::Currency Price, ExtendedPrice;
  bool IsPriceModified = false;
  std::string CustomerPartNumber, CustomerNotes;
  bool HasNotes = false;
  bool HasPartsInfo = false;
};
void AddItem(qm_ordering::Database& orDatabase, const Line& line);

// The same for OrderItem_Save.
struct SavedLine {
  std::int32_t OrderID = 12;
  std::string ItemNumber = "A-1";
  std::int32_t Quantity = 1;
  std::string Description, Manufacturer, Model;
  std::int32_t SellQuantity = 1;
  std::int32_t ShipQuantity = 1;
  std::string UsuallyShips;
  bool IsTaxable = false;
  qm_ordering::Currency Price, ExtendedPrice;
  bool IsPriceModified = false;
  std::string CustomerPartNumber, CustomerNotes;
};
void SaveLine(qm_ordering::Database& orDatabase, const SavedLine& line);

// An item for a collection handed to OrderDetails_UpdateItems.
std::shared_ptr<qm_ordering::OrderItem> Item(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                             std::string_view zvPrice = "0",
                                             std::string_view zvExtendedPrice = "0",
                                             bool bvIsPriceModified = false, bool bvIsTaxable = false);

// A store with a Database on it and the trace of its statements.
class DatabaseFixture : public StoreFixture {
 protected:
  // These write past the library and leave no statement in the trace.
  void AddOrder(std::int32_t lvOrderID, bool bvIsCurrent = false) const;
  void AddLine(std::int32_t lvOrderID, const std::string& zvItemNumber, std::int32_t lvQuantity = 1,
               std::string_view zvExtendedPrice = "0") const;

  // One column of one line, and of one order.
  std::string OfLine(std::int32_t lvOrderID, const std::string& zvItemNumber,
                     const std::string& zvColumn) const;
  std::string OfOrder(std::int32_t lvOrderID, const std::string& zvColumn) const;

  // The record as "NUMBER DESCRIPTION"; "0 " when it is clear.
  std::string Recorded() const;

  qm_ordering::Database Database;
  TraceRecorder Trace;
};

}  // namespace test
