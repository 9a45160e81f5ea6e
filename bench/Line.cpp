#include "bench/Line.h"

#include <array>

namespace bench {

Line MakeLine(std::int32_t lvNumber) {
  static constexpr std::array<const char*, 5> kMakers = {"Aldgate", "Birchwood & Sons", "Corvin",
                                                         "Dorset Tool", "Ellory"};
  static constexpr std::array<const char*, 4> kShips = {"TODAY", "1-3 DAYS", "SPECIAL ORDER", "2 WEEKS"};
  const auto lIndex = static_cast<std::size_t>(lvNumber);
  const std::string zNumber = std::to_string(100'000 + lvNumber);
  Line line;
  line.OrderID = 1;
  line.ItemNumber = "4QX" + zNumber;
  line.SellQuantity = 1 + lvNumber % 6;
  line.ShipQuantity = 12;
  line.Quantity = line.SellQuantity * (1 + lvNumber % 9);
  line.Description =
      "Hex bolt M8 x " + zNumber + ", zinc plated, box of " + std::to_string(line.SellQuantity);
  line.ShortDescription = "Hex bolt M8";
  line.Manufacturer = kMakers[lIndex % kMakers.size()];
  line.Model = "HB-" + zNumber;
  line.UsuallyShips = kShips[lIndex % kShips.size()];
  line.UsuallyShipsSortOrder = lIndex % kShips.size() == 3 ? 999 : lvNumber % 4;
  line.IsTaxable = lvNumber % 3 == 0;
  line.Price = 10'000 + lvNumber % 977 * 1'275;
  line.ExtendedPrice = line.Price * line.Quantity;
  line.CustomerPartNumber = "P-" + zNumber;
  line.CustomerNotes = lvNumber % 10 == 0 ? "Ring the yard before delivery <gate 3>" : "";
  line.HasNotes = lvNumber % 10 == 0;
  return line;
}

std::vector<Line> MakeLines(std::int32_t lvFirst, std::int32_t lvEnd) {
  std::vector<Line> lines;
  lines.reserve(static_cast<std::size_t>(lvEnd - lvFirst));
  for (std::int32_t i = lvFirst; i < lvEnd; ++i) {
    lines.push_back(MakeLine(i));
  }
  return lines;
}

}  // namespace bench
