#include "qm_ordering/qm_ordering.h"

int main() {
  qm_ordering::CurrentOrder order;
  order.LoadItems(0);
  return order.Error().Number == 0 && order.OrderDetails()->OrderItems()->Count() == 10 ? 0 : 1;
}
