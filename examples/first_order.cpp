#include <iostream>
#include <memory>

#include "qm_ordering/qm_ordering.h"

using namespace qm_ordering;

int main() try {
  CurrentOrder order;  // loads the current order; creates it when there is none
  auto details = order.OrderDetails();
  auto item = std::make_shared<OrderItem>();
  item->ItemNumber("4QX17");
  item->Description("Claw hammer, 16 oz");
  item->SellQuantity(6);  // the pack in which it is sold at a branch
  item->ShipQuantity(12);
  item->Quantity(18);
  item->Price(Currency::Parse("11.4725"));
  if (details->Error().Number == 0) {
    order.AddItem(item);  // a new line, or more of the one that is there
  }
  if (details->Error().Number != 0) {
    std::cerr << "error " << details->Error().Number << ": " << details->Error().Description << "\n";
    return 1;
  }
  order.LoadItems(0);  // what the store holds now, quantities checked against the packs
  std::cout << details->OrderItems()->Count() << " lines, " << details->TotalPrice().ToString() << "\n";
  return details->HasInvalidQuantities() ? 1 : 0;
} catch (const Failure& failure) {
  std::cerr << "failure " << failure.Number() << ": " << failure.what() << "\n";
  return 3;
}
