/* A host in C outside of the library's tree. */

#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qm_ordering/qm_ordering_c.h"

static void Require(int holds, const char* what) {
  if (!holds) {
    qm_ordering_failure failure = {0};
    qm_ordering_get_failure(&failure);
    fprintf(stderr, "It does not hold that %s: %" PRId32 " %s\n", what, failure.number,
            failure.description.data == NULL ? "" : failure.description.data);
    exit(1);
  }
}

static int32_t ReadSetting(const char* key, qm_ordering_reply* value, void* payload) {
  const char* folder = payload;
  return strcmp(key, "OrderingDatabasePath") == 0 ? qm_ordering_answer(value, folder, strlen(folder)) : 0;
}

static void Put(qm_ordering_object object, const char* member, qm_ordering_value value) {
  Require(qm_ordering_put(object, member, &value) == 0, member);
}

static qm_ordering_value Get(qm_ordering_object object, const char* member) {
  qm_ordering_value value;
  Require(qm_ordering_get(object, member, NULL, 0, &value) == 0, member);
  return value;
}

int main(void) {
  static char folder[] = "store_of_c";
  const qm_ordering_settings settings = {.user_setting = ReadSetting};
  Require(qm_ordering_create_order_store(folder) == 0, "a store can be made");
  Require(qm_ordering_install_settings(&settings, folder) == 0, "settings can be installed");

  qm_ordering_object order;
  qm_ordering_object item;
  Require(qm_ordering_create("QM_Ordering.CurrentOrder", &order) == 0, "an order can be made");
  Require(qm_ordering_create("QM_Ordering.OrderItem", &item) == 0, "an item can be made");
  Put(item, "ItemNumber", (qm_ordering_value){.kind = QM_ORDERING_TEXT, .as.text = {"4QX17", 5}});
  Put(item, "Quantity", (qm_ordering_value){.kind = QM_ORDERING_INTEGER, .as.integer = 18});
  Put(item, "Price", (qm_ordering_value){.kind = QM_ORDERING_CURRENCY, .as.currency = 114725});
  const qm_ordering_value argument = {.kind = QM_ORDERING_OBJECT, .as.object = item};
  Require(qm_ordering_call(order, "AddItem", &argument, 1, NULL) == 0, "the line is added");

  qm_ordering_value details = Get(order, "OrderDetails");
  Require(Get(details.as.object, "TotalPrice").as.currency == 2065050, "the total is exact");
  qm_ordering_value document = Get(order, "GetXML");
  Require(strstr(document.as.text.data, "4QX17") != NULL, "the line is in the document");
  Require(qm_ordering_create("Nothing", &item) == 429, "a failure is told by its number");
  Require(qm_ordering_clear(&document) == 0 && qm_ordering_clear(&details) == 0, "values can be cleared");
  Require(qm_ordering_release(order) == 0, "the order can be released");
  puts("The consumer in C works");
  return 0;
}
