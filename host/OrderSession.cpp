#include "host/OrderSession.h"

#include <vector>

#include "host/Errors.h"
#include "host/NearestNames.h"
#include "host/Packs.h"
#include "host/Text.h"

namespace host {

using namespace qm_ordering;

namespace {

// The item numbers of the lines whose pack size is 0.
std::vector<std::string> LinesWithoutPack(const OrderDetails& order) {
  const std::int32_t lMethod = order.DeliveryInformation()->DeliveryMethod();
  std::vector<std::string> items;
  for (const auto& oItem : *order.OrderItems()) {
    if (PackOf(*oItem, lMethod) == 0) {
      items.push_back(oItem->ItemNumber());
    }
  }
  return items;
}

}  // namespace

std::shared_ptr<CurrentOrder> OpenCurrentOrder(Context& context) {
  // Making the object loads the summary. How that went is in the record of the order behind it.
  auto oOrder = std::make_shared<CurrentOrder>();
  const ErrorInfo record = oOrder->OrderDetails()->Error();
  if (record.Number != 0) {
    NoteWhenNoStoreIsSet(context);
  }
  CheckRecord(record);
  return oOrder;
}

bool LoadCheckedLines(Context& context, CurrentOrder& order, std::int32_t lvSortOrder, Uncheckable told) {
  try {
    order.LoadItems(lvSortOrder);
    return true;
  } catch (const Failure& failure) {
    if (failure.Number() != failure::kDivisionByZero) {
      throw;
    }
    order.OrderDetails()->LoadItems(lvSortOrder, true, false);
    const std::vector<std::string> items = LinesWithoutPack(*order.OrderDetails());
    const std::string zText = failure.Description() + ". The pack size of " + Listed(items) +
                              " is 0, so no quantity of this order can be checked. Take the " +
                              (items.size() == 1 ? "line" : "lines") +
                              " out with `order remove ITEM` and add the item again.";
    if (told == Uncheckable::Warning) {
      context.Out.Warning(zText);
    } else {
      context.Out.Error(failure.Number(), zText);
    }
    return false;
  }
}

void LoadUncheckedLines(CurrentOrder& order) {
  order.OrderDetails()->LoadItems(0, true, false);
}

std::shared_ptr<OrderItem> FindLine(const CurrentOrder& order, const std::string& zvItemNumber) {
  const auto oItems = order.OrderDetails()->OrderItems();
  if (auto oItem = oItems->Item(zvItemNumber)) {
    return oItem;
  }
  if (oItems->Count() == 0) {
    throw UsageError("The order has no lines, so it has no item " + zvItemNumber + ".");
  }
  std::vector<std::string> numbers;
  for (const auto& oItem : *oItems) {
    numbers.push_back(oItem->ItemNumber());
  }
  throw UsageError("The order has no item " + zvItemNumber + "." + DidYouMean(zvItemNumber, numbers) +
                   " `qm-ordering order show` shows its lines.");
}

}  // namespace host
