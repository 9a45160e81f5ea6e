#include <stdio.h>
#include <stdlib.h>

#include "qm_ordering/qm_ordering_c.h"

// Ends the program when a call failed.
static void require(int32_t answer) {
  if (answer != 0) {
    qm_ordering_failure failure;
    qm_ordering_get_failure(&failure);
    fprintf(stderr, "error %d: %s\n", failure.number, failure.description.data);
    exit(1);
  }
}

static qm_ordering_object object_of(qm_ordering_object object, const char* property) {
  qm_ordering_value value;
  require(qm_ordering_get(object, property, NULL, 0, &value));
  return value.as.object;
}

int main(void) {
  qm_ordering_object order;
  qm_ordering_object item;
  require(qm_ordering_create("CurrentOrder", &order));  // loads the current order
  require(qm_ordering_create("OrderItem", &item));
  qm_ordering_value number = {.kind = QM_ORDERING_TEXT, .as.text = {"4QX17", 5}};
  qm_ordering_value quantity = {.kind = QM_ORDERING_INTEGER, .as.integer = 18};
  qm_ordering_value pack = {.kind = QM_ORDERING_INTEGER, .as.integer = 6};
  qm_ordering_value price = {.kind = QM_ORDERING_CURRENCY, .as.currency = 114725};  // 11.4725
  require(qm_ordering_put(item, "ItemNumber", &number));
  require(qm_ordering_put(item, "Quantity", &quantity));
  require(qm_ordering_put(item, "SellQuantity", &pack));
  require(qm_ordering_put(item, "Price", &price));

  qm_ordering_value line = {.kind = QM_ORDERING_OBJECT, .as.object = item};
  require(qm_ordering_call(order, "AddItem", &line, 1, NULL));
  qm_ordering_object record = object_of(order, "Error");  // what AddItem says of itself
  qm_ordering_value error;
  require(qm_ordering_get(record, "Number", NULL, 0, &error));
  if (error.as.integer != 0) {
    qm_ordering_failure failure;
    qm_ordering_last_failure(&failure);
    fprintf(stderr, "error %d: %s\n", error.as.integer, failure.description.data);
    return 1;
  }

  qm_ordering_object details = object_of(order, "OrderDetails");
  qm_ordering_value total;
  require(qm_ordering_get(details, "TotalPrice", NULL, 0, &total));
  printf("The order comes to %lld.%04lld\n", (long long)(total.as.currency / 10000),
         (long long)(total.as.currency % 10000));
  qm_ordering_release(details);
  qm_ordering_release(record);
  qm_ordering_release(item);
  qm_ordering_release(order);
  return 0;
}
