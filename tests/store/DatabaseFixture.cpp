#include "tests/store/DatabaseFixture.h"

#include <memory>

namespace test {

using qm_ordering::Currency;

const char* const kHighestMoney = "922337203685477.5807";
const char* const kLowestMoney = "-922337203685477.5808";

Currency Money(std::string_view zvAmount) {
  return Currency::Parse(zvAmount);
}

void AddItem(qm_ordering::Database& orDatabase, const Line& line) {
  orDatabase.OrderDetails_AddItem(line.OrderID, line.ItemNumber, line.Quantity, line.Description,
                                  line.ShortDescription, line.Manufacturer, line.Model, line.SellQuantity,
                                  line.ShipQuantity, line.UsuallyShips, line.IsTaxable, line.Price,
                                  line.ExtendedPrice, line.IsPriceModified, line.CustomerPartNumber,
                                  line.CustomerNotes, line.HasNotes, line.HasPartsInfo);
}

void SaveLine(qm_ordering::Database& orDatabase, const SavedLine& line) {
  orDatabase.OrderItem_Save(line.OrderID, line.ItemNumber, line.Quantity, line.Description, line.Manufacturer,
                            line.Model, line.SellQuantity, line.ShipQuantity, line.UsuallyShips,
                            line.IsTaxable, line.Price, line.ExtendedPrice, line.IsPriceModified,
                            line.CustomerPartNumber, line.CustomerNotes);
}

std::shared_ptr<qm_ordering::OrderItem> Item(const std::string& zvItemNumber, std::int32_t lvQuantity,
                                             std::string_view zvPrice, std::string_view zvExtendedPrice,
                                             bool bvIsPriceModified, bool bvIsTaxable) {
  auto oItem = std::make_shared<qm_ordering::OrderItem>();
  oItem->ItemNumber(zvItemNumber);
  oItem->Quantity(lvQuantity);
  oItem->Price(Money(zvPrice));
  oItem->ExtendedPrice(Money(zvExtendedPrice));
  oItem->IsPriceModified(bvIsPriceModified);
  oItem->IsTaxable(bvIsTaxable);
  return oItem;
}

void DatabaseFixture::AddOrder(std::int32_t lvOrderID, bool bvIsCurrent) const {
  Store.Run("insert into tblOrder (lOrderID, bIsCurrent) values (" + std::to_string(lvOrderID) +
            (bvIsCurrent ? ", -1)" : ", 0)"));
}

void DatabaseFixture::AddLine(std::int32_t lvOrderID, const std::string& zvItemNumber,
                              std::int32_t lvQuantity, std::string_view zvExtendedPrice) const {
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, cExtendedPrice) values (" +
            std::to_string(lvOrderID) + ", " + Quoted(zvItemNumber) + ", " + std::to_string(lvQuantity) +
            ", " + std::to_string(Money(zvExtendedPrice).Scaled()) + ")");
}

std::string DatabaseFixture::OfLine(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                    const std::string& zvColumn) const {
  return Store.Value("select " + zvColumn + " from tblOrderItem where lOrderID = " +
                     std::to_string(lvOrderID) + " and zItemNumber = " + Quoted(zvItemNumber));
}

std::string DatabaseFixture::OfOrder(std::int32_t lvOrderID, const std::string& zvColumn) const {
  return Store.Value("select " + zvColumn + " from tblOrder where lOrderID = " + std::to_string(lvOrderID));
}

std::string DatabaseFixture::Recorded() const {
  const qm_ordering::ErrorInfo error = Database.Error();
  return std::to_string(error.Number) + " " + error.Description;
}

}  // namespace test
