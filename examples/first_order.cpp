#include <iostream>

#include "qm_ordering/qm_ordering.h"

using namespace qm_ordering;

int main() try {
  CurrentOrder order;  // loads the current order; creates it when there is none
  auto item = std::make_shared<OrderItem>();
  item->ItemNumber("4QX17");
  item->Quantity(18);
  item->SellQuantity(6);  // the pack in which it is sold at a branch
  item->Price(Currency::Parse("11.4725"));
  order.AddItem(item);  // a new line, or more of the one that is there
  if (order.Error().Number != 0) {
    throw Failure(order.Error().Number, order.Error().Description + ". " + LastFailure().Description);
  }
  order.LoadItems(0);  // what the store holds now, quantities checked against the packs
  std::cout << "The order comes to " << order.OrderDetails()->TotalPrice().ToString() << "\n";
} catch (const Failure& failure) {
  std::cerr << "error " << failure.Number() << ": " << failure.what() << "\n";
  return 1;
}
