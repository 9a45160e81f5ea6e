#include "host/Reorder.h"

#include <cstdint>
#include <memory>

#include "host/Catalogue.h"
#include "host/Errors.h"
#include "host/LineChanges.h"
#include "host/Requests.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

const char* const kReorderHelp =
    R"(Each line says what was added, or added to a line that the order had already, and whether the quantity fits
its pack (a * marks one that does not); where a line of the order got another price, it says which one it
was. An item without a price is refused and named, with exit code 1, and the others are added: at 0 it would
take its price away from a line of the order.
)";

namespace {

std::string QuantityProblem(const OrderItem& line) {
  return line.Quantity() > 0 ? "" : "its quantity is " + std::to_string(line.Quantity());
}

// What the catalogue knows of the item now, with the user's own remarks of then.
Request CurrentRequest(const OrderItem& line, const Catalogue& catalogue) {
  const auto oItem = catalogue.Items().Item(line.ItemNumber());
  if (oItem == nullptr) {
    const auto oRefused = std::make_shared<OrderItem>();
    oRefused->ItemNumber(line.ItemNumber());
    oRefused->Description(line.Description());
    return {oRefused, line.Quantity(), false, "it is not in the catalogue, so it has no price"};
  }
  oItem->CustomerPartNumber(line.CustomerPartNumber());
  oItem->CustomerNotes(line.CustomerNotes());
  oItem->HasNotes(line.HasNotes());
  oItem->HasPartsInfo(line.HasPartsInfo());
  const std::string zProblem =
      oItem->Price() == Currency() ? "the catalogue has no price for it" : QuantityProblem(line);
  return {oItem, line.Quantity(), catalogue.HadNoPack(*oItem), zProblem};
}

int Reorder(Context& context, const OrderItems& lines, const std::string& zvCatalogueFile) {
  const Catalogue catalogue(zvCatalogueFile, context.Out);
  Requests requests;
  for (const auto& oLine : lines) {
    requests.Add(CurrentRequest(*oLine, catalogue));
  }
  return AddToCurrentOrder(context, requests, "The catalogue");
}

// An import knows no packs, and a line without them would make the order impossible to check.
bool CountMissingPacks(OrderItem& orItem) {
  const bool bMissing = orItem.SellQuantity() == 0 || orItem.ShipQuantity() == 0;
  orItem.SellQuantity(orItem.SellQuantity() == 0 ? 1 : orItem.SellQuantity());
  orItem.ShipQuantity(orItem.ShipQuantity() == 0 ? 1 : orItem.ShipQuantity());
  return bMissing;
}

}  // namespace

int ReorderList(Context& context, const PersonalList& list, const std::string& zvCatalogueFile) {
  if (list.OrderItems()->Count() == 0) {
    throw Refusal("The list \"" + list.Name() + "\" has no items, so there is nothing to order.");
  }
  return Reorder(context, *list.OrderItems(), zvCatalogueFile);
}

int ReorderOrder(Context& context, const OrderDetails& order, const std::string& zvCatalogueFile) {
  return Reorder(context, *order.OrderItems(), zvCatalogueFile);
}

int ReorderAtOldPrices(Context& context, const OrderDetails& order) {
  const std::string zOrder = "Order " + std::to_string(order.OrderID());
  Requests requests;
  for (const auto& oLine : *order.OrderItems()) {
    const bool bHadNoPack = CountMissingPacks(*oLine);
    const std::string zProblem =
        oLine->Price() == Currency() ? "its old price is 0" : QuantityProblem(*oLine);
    const Request* pEarlier = requests.Find(oLine->ItemNumber());
    if (pEarlier != nullptr && zProblem.empty() && pEarlier->Item->Price() != oLine->Price()) {
      context.Out.Warning(zOrder + " has the item " + oLine->ItemNumber() + " twice, at " +
                          MoneyText(pEarlier->Item->Price()) + " and at " + MoneyText(oLine->Price()) +
                          "; both are added at " + MoneyText(pEarlier->Item->Price()) + ".");
    }
    requests.Add({oLine, oLine->Quantity(), bHadNoPack, zProblem});
  }
  return AddToCurrentOrder(context, requests, zOrder);
}

}  // namespace host
