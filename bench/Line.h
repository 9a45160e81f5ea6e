#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

// A line of an order as a program without the library keeps it. Amounts are scaled by 10,000.
struct Line {
  std::int64_t Entered = 0;
  std::int64_t OrderID = 0;
  std::string ItemNumber;
  std::int64_t Quantity = 0;
  std::string Description;
  std::string ShortDescription;
  std::string Manufacturer;
  std::string Model;
  std::int64_t SellQuantity = 0;
  std::int64_t ShipQuantity = 0;
  std::string UsuallyShips;
  std::int64_t UsuallyShipsSortOrder = 0;
  bool IsTaxable = false;
  std::int64_t Price = 0;
  std::int64_t ExtendedPrice = 0;
  bool IsPriceModified = false;
  std::string CustomerPartNumber;
  std::string CustomerNotes;
  bool HasNotes = false;
  bool HasPartsInfo = false;
  bool HasContractItem = false;
  bool Imported = false;
  bool ValidQuantity = true;
};

// The line of the lvNumber-th item of a made catalogue.
Line MakeLine(std::int32_t lvNumber);

// The lines of the items from the first number to before the second.
std::vector<Line> MakeLines(std::int32_t lvFirst, std::int32_t lvEnd);

}  // namespace bench
