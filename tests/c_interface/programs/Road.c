/* A host in C that walks the whole road through the C interface and nothing else. Arguments: a folder in
   which it makes its order store, the folder of an older program's tables, a folder for what it was told:
   every document, log and statement, each in a file of its own. RoadTest.cpp walks the same road in C++. */

#include <inttypes.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qm_ordering/qm_ordering_c.h"

static const char* g_folder;
static const char* g_told;

static _Noreturn void Fail(const char* what, int32_t number) {
  qm_ordering_failure failure;
  if (qm_ordering_get_failure(&failure) == 0) {
    fprintf(stderr, "%s: %" PRId32 " %s\n", what, number, failure.description.data);
  }
  exit(1);
}

static void Need(int32_t number, const char* what) {
  if (number != 0) {
    Fail(what, number);
  }
}

/* Adds to a file of what was told. */
static void Tell(const char* file, const char* data, size_t length) {
  char path[4096];
  snprintf(path, sizeof path, "%s/%s", g_told, file);
  FILE* stream = fopen(path, "ab");
  if (stream == NULL || fwrite(data, 1, length, stream) != length || fclose(stream) != 0) {
    perror(path);
    exit(1);
  }
}

__attribute__((format(printf, 2, 3))) static void TellLine(const char* file, const char* format, ...) {
  char line[4096];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(line, sizeof line, format, arguments);
  va_end(arguments);
  Tell(file, line, strlen(line));
  Tell(file, "\n", 1);
}

/* Values. */

static qm_ordering_value Boolean(bool value) {
  return (qm_ordering_value){.kind = QM_ORDERING_BOOLEAN, .as.boolean = value};
}

static qm_ordering_value Integer(int32_t value) {
  return (qm_ordering_value){.kind = QM_ORDERING_INTEGER, .as.integer = value};
}

static qm_ordering_value Money(int64_t value) {
  return (qm_ordering_value){.kind = QM_ORDERING_CURRENCY, .as.currency = value};
}

static qm_ordering_value Text(const char* value) {
  return (qm_ordering_value){.kind = QM_ORDERING_TEXT, .as.text = {value, strlen(value)}};
}

static qm_ordering_value Object(qm_ordering_object value) {
  return (qm_ordering_value){.kind = QM_ORDERING_OBJECT, .as.object = value};
}

static qm_ordering_value Use(qm_ordering_object object, const char* member,
                             const qm_ordering_value* arguments, size_t count, int32_t kind) {
  qm_ordering_value result;
  Need(qm_ordering_call(object, member, arguments, count, &result), member);
  if (result.kind != kind) {
    fprintf(stderr, "%s answers a value of kind %" PRId32 "\n", member, result.kind);
    exit(1);
  }
  return result;
}

#define ARGUMENTS(...)                      \
  (const qm_ordering_value[]){__VA_ARGS__}, \
      sizeof((const qm_ordering_value[]){__VA_ARGS__}) / sizeof(qm_ordering_value)

static void Do(qm_ordering_object object, const char* member) {
  Use(object, member, NULL, 0, QM_ORDERING_EMPTY);
}

#define DO(object, member, ...) Use(object, member, ARGUMENTS(__VA_ARGS__), QM_ORDERING_EMPTY)

static void Put(qm_ordering_object object, const char* member, qm_ordering_value value) {
  Need(qm_ordering_put(object, member, &value), member);
}

static qm_ordering_value Get(qm_ordering_object object, const char* member, int32_t kind) {
  qm_ordering_value result;
  Need(qm_ordering_get(object, member, NULL, 0, &result), member);
  if (result.kind != kind) {
    fprintf(stderr, "%s is a value of kind %" PRId32 "\n", member, result.kind);
    exit(1);
  }
  return result;
}

static qm_ordering_object GetObject(qm_ordering_object object, const char* member) {
  return Get(object, member, QM_ORDERING_OBJECT).as.object;
}

static int32_t GetInteger(qm_ordering_object object, const char* member) {
  return Get(object, member, QM_ORDERING_INTEGER).as.integer;
}

static int64_t GetMoney(qm_ordering_object object, const char* member) {
  return Get(object, member, QM_ORDERING_CURRENCY).as.currency;
}

static qm_ordering_object Create(const char* class_name) {
  qm_ordering_object object;
  Need(qm_ordering_create(class_name, &object), class_name);
  return object;
}

static void Release(qm_ordering_object object) {
  Need(qm_ordering_release(object), "release");
}

/* A text that a member answers, as a file. */
static void TellText(const char* file, qm_ordering_object object, const char* member) {
  qm_ordering_value text = Get(object, member, QM_ORDERING_TEXT);
  Tell(file, text.as.text.data, text.as.text.length);
  Need(qm_ordering_clear(&text), "clear");
}

static void NeedNoError(qm_ordering_object object, const char* what) {
  const qm_ordering_object error = GetObject(object, "Error");
  if (GetInteger(error, "Number") != 0) {
    qm_ordering_value description = Get(error, "Description", QM_ORDERING_TEXT);
    fprintf(stderr, "%s: %s\n", what, description.as.text.data);
    exit(1);
  }
  Release(error);
}

/* What each member of a collection answers, a line each. */
static void TellEach(const char* file, qm_ordering_object collection, const char* member) {
  qm_ordering_object walk;
  Need(qm_ordering_enumerate(collection, &walk), "enumerate");
  qm_ordering_value each;
  for (Need(qm_ordering_next(walk, &each), "next"); each.kind != QM_ORDERING_MISSING;
       Need(qm_ordering_next(walk, &each), "next")) {
    TellText(file, each.as.object, member);
    Tell(file, "\n", 1);
    Need(qm_ordering_clear(&each), "clear");
  }
  Release(walk);
}

static void TellTexts(const char* file, qm_ordering_object texts) {
  for (int32_t position = 1; position <= GetInteger(texts, "Count"); ++position) {
    qm_ordering_value text = Use(texts, "", ARGUMENTS(Integer(position)), QM_ORDERING_TEXT);
    TellLine(file, "%s", text.as.text.data);
    Need(qm_ordering_clear(&text), "clear");
  }
  TellLine(file, "texts: %" PRId32, GetInteger(texts, "Count"));
  Release(texts);
}

/* The settings component, in memory. */

enum { kMostDefaults = 100, kLongest = 200 };

typedef struct {
  char Keys[kMostDefaults][kLongest];
  char Values[kMostDefaults][kLongest];
  size_t Count;
} Settings;

static int32_t Answer(qm_ordering_reply* reply, const char* text) {
  return qm_ordering_answer(reply, text, strlen(text));
}

static int32_t UserSetting(const char* key, qm_ordering_reply* value, void* payload) {
  (void)payload;
  const bool here = strcmp(key, "OrderingDatabasePath") == 0 || strcmp(key, "LogPath") == 0;
  return here ? Answer(value, g_folder) : 0;
}

static int32_t OrderDefault(const char* key, qm_ordering_reply* value, void* payload) {
  const Settings* settings = payload;
  for (size_t i = 0; i < settings->Count; ++i) {
    if (strcmp(settings->Keys[i], key) == 0) {
      return Answer(value, settings->Values[i]);
    }
  }
  return 0;
}

static int32_t SetOrderDefault(const char* key, const char* data, size_t length, qm_ordering_reply* reply,
                               void* payload) {
  Settings* settings = payload;
  size_t i = 0;
  while (i < settings->Count && strcmp(settings->Keys[i], key) != 0) {
    ++i;
  }
  if (i == kMostDefaults || length >= kLongest || strlen(key) >= kLongest) {
    Answer(reply, "There is no room for the order default.");
    return 75;
  }
  if (i == settings->Count) {
    strcpy(settings->Keys[settings->Count++], key);
  }
  memcpy(settings->Values[i], data, length);
  settings->Values[i][length] = '\0';
  return 0;
}

static int32_t SaveOrderDefaults(qm_ordering_reply* reply, void* payload) {
  (void)reply;
  const Settings* settings = payload;
  for (size_t i = 0; i < settings->Count; ++i) {
    TellLine("defaults", "%s=%s", settings->Keys[i], settings->Values[i]);
  }
  return 0;
}

static int32_t Registration(const char* field, qm_ordering_reply* value, void* payload) {
  (void)payload;
  char text[kLongest];
  snprintf(text, sizeof text, "%s of the user", field);
  return Answer(value, text);
}

static void Dispose(void* payload) {
  free(payload);
  TellLine("disposed", "once");
}

static int32_t Trace(const char* data, size_t length, qm_ordering_reply* reply, void* payload) {
  (void)reply;
  Tell(payload, data, length);
  Tell(payload, "\n", 1);
  return 0;
}

static int32_t Progress(int64_t orders, int64_t lines, int64_t lines_in_all, int32_t* go_on,
                        qm_ordering_reply* reply, void* payload) {
  (void)reply;
  TellLine("progress", "%" PRId64 " %" PRId64 " of %" PRId64, orders, lines, lines_in_all);
  *go_on = lines < *(const int64_t*)payload;
  return 0;
}

static int32_t CopyProgress(int64_t done, int64_t in_all, qm_ordering_reply* reply, void* payload) {
  (void)reply;
  *(bool*)payload = done == in_all;
  return 0;
}

/* The road. */

static qm_ordering_object NewItem(const char* number, int32_t quantity, int32_t pack, int64_t price) {
  const qm_ordering_object item = Create("QM_Ordering.OrderItem");
  char description[kLongest];
  snprintf(description, sizeof description, "What \"%s\" is: <a & b>, it's M\xC3\xBCller", number);
  Put(item, "ItemNumber", Text(number));
  Put(item, "Quantity", Integer(quantity));
  Put(item, "Description", Text(description));
  Put(item, "Manufacturer", Text("Maker"));
  Put(item, "Model", Text("M-1"));
  Put(item, "SellQuantity", Integer(pack));
  Put(item, "ShipQuantity", Integer(pack));
  Put(item, "UsuallyShips", Text("TODAY"));
  Put(item, "IsTaxable", Boolean(true));
  Put(item, "Price", Money(price));
  Put(item, "CustomerPartNumber", Text("P-1"));
  Put(item, "CustomerNotes", Text("Notes"));
  return item;
}

static void AddLine(qm_ordering_object order, const char* number, int32_t quantity, int32_t pack,
                    int64_t price) {
  const qm_ordering_object item = NewItem(number, quantity, pack, price);
  DO(order, "AddItem", Object(item));
  NeedNoError(order, "AddItem");
  Release(item);
}

static void FillOrder(qm_ordering_object order, qm_ordering_object details) {
  AddLine(order, "4QX17", 18, 6, 114725);
  AddLine(order, "2AB03", 4, 2, 25);
  AddLine(order, "9ZZ99", 5, 2, 12345678);
  AddLine(order, "1AA01", 1, 1, 0);
  /* A line that is there already becomes more. */
  AddLine(order, "4qx17", 6, 6, 114725);
  TellLine("answers", "%" PRId32 " lines", Use(order, "ItemCount", NULL, 0, QM_ORDERING_INTEGER).as.integer);
  for (int32_t sort = 0; sort <= 6; ++sort) {
    DO(order, "LoadItems", Integer(sort));
    NeedNoError(order, "LoadItems");
    const qm_ordering_object items = GetObject(details, "OrderItems");
    TellLine("lines", "sorted %" PRId32, sort);
    TellEach("lines", items, "GetXML");
    Release(items);
  }
  TellLine("answers", "total %" PRId64, GetMoney(details, "TotalPrice"));
  TellLine("answers", "invalid quantities %" PRId32,
           Get(details, "HasInvalidQuantities", QM_ORDERING_BOOLEAN).as.boolean);
}

static void ChangeOrder(qm_ordering_object order, qm_ordering_object details) {
  const qm_ordering_object items = GetObject(details, "OrderItems");
  const qm_ordering_object item = Use(items, "Item", ARGUMENTS(Text("9zz99")), QM_ORDERING_OBJECT).as.object;
  Put(item, "Quantity", Integer(6));
  DO(order, "UpdateItems", Object(items));
  NeedNoError(order, "UpdateItems");
  Release(item);
  Release(items);
  DO(order, "RemoveItem", Text("1AA01"));
  NeedNoError(order, "RemoveItem");
  DO(order, "LoadItems", Integer(2));
  TellLine("answers", "removed line %" PRId32,
           Use(order, "ItemExists", ARGUMENTS(Text("1AA01")), QM_ORDERING_BOOLEAN).as.boolean);
}

static void FillHeader(qm_ordering_object order, qm_ordering_object details) {
  Do(order, "ApplyRegistrationSettings");
  NeedNoError(order, "ApplyRegistrationSettings");
  Put(details, "PurchaseOrderNumber", Text("PO-4711"));
  const qm_ordering_object information = GetObject(details, "OrderInformation");
  Put(information, "PORelease", Text("R-1"));
  Put(information, "Department", Text("Tools & more"));
  Put(information, "IsTaxExempt", Boolean(true));
  Put(information, "TaxIDNumber", Text("T-9"));
  Release(information);
  const qm_ordering_object delivery = GetObject(details, "DeliveryInformation");
  Put(delivery, "DeliveryMethod", Integer(1));
  Put(delivery, "ShippingMethod", Integer(3));
  Put(delivery, "Notes", Text("At the gate"));
  TellLine("answers", "delivery valid %" PRId32,
           Use(delivery, "Validate", NULL, 0, QM_ORDERING_BOOLEAN).as.boolean);
  TellText("delivery.xml", delivery, "GetXML");
  Release(delivery);
  const qm_ordering_object payment = GetObject(details, "PaymentInformation");
  Put(payment, "Method", Integer(1));
  Put(payment, "MorvaneAccountNumber", Text("A-77"));
  const qm_ordering_object card = GetObject(payment, "CreditCardDetails");
  Put(card, "CardNumber", Text("4111111111111111"));
  Put(card, "ExpiryMonth", Integer(7));
  Put(card, "FirstName", Text("Ann"));
  TellLine("answers", "card valid %" PRId32, Use(card, "Validate", NULL, 0, QM_ORDERING_BOOLEAN).as.boolean);
  Release(card);
  TellText("payment.xml", payment, "GetXML");
  Release(payment);
  Do(order, "SaveSummary");
  NeedNoError(order, "SaveSummary");
  Do(order, "SavePONumber");
  NeedNoError(order, "SavePONumber");
}

static void Order(void) {
  const qm_ordering_object order = Create("QM_Ordering.CurrentOrder");
  const qm_ordering_object details = GetObject(order, "OrderDetails");
  FillOrder(order, details);
  ChangeOrder(order, details);
  FillHeader(order, details);
  TellText("order.xml", order, "GetXML");
  Do(order, "SaveToHistory");
  NeedNoError(order, "SaveToHistory");
  Do(order, "LoadSummary");
  DO(order, "LoadItems", Integer(0));
  TellText("next.xml", order, "GetXML");
  AddLine(order, "4QX17", 6, 6, 114725);
  Release(details);
  Release(order);
}

static void AddToList(int32_t list_id, const char* number) {
  const qm_ordering_object list = Create("PersonalList");
  const qm_ordering_object item = NewItem(number, 2, 1, 0);
  DO(list, "AddItem", Object(item), Integer(list_id));
  NeedNoError(list, "PersonalList.AddItem");
  Release(item);
  Release(list);
}

static void Lists(void) {
  const qm_ordering_object lists = Create("PersonalLists");
  const int32_t tools = Use(lists, "CreateList", ARGUMENTS(Text("Tools")), QM_ORDERING_INTEGER).as.integer;
  const int32_t paint = Use(lists, "CreateList", ARGUMENTS(Text("Paint")), QM_ORDERING_INTEGER).as.integer;
  TellLine("answers", "lists %" PRId32 " %" PRId32, tools, paint);
  AddToList(tools, "4QX17");
  AddToList(tools, "2AB03");
  AddToList(paint, "9ZZ99");
  TellLine(
      "answers", "renamed %" PRId32,
      Use(lists, "RenameList", ARGUMENTS(Integer(paint), Text("O'Paint")), QM_ORDERING_BOOLEAN).as.boolean);
  Do(lists, "LoadLists");
  TellEach("lists", lists, "Name");
  TellText("lists.xml", lists, "GetXML");
  Do(lists, "SaveAsXML");
  const qm_ordering_object list = Create("PersonalList");
  Put(list, "ListID", Integer(tools));
  Do(list, "LoadSummary");
  Do(list, "LoadItems");
  NeedNoError(list, "PersonalList.LoadItems");
  TellText("lists", list, "Name");
  const qm_ordering_object items = GetObject(list, "OrderItems");
  TellEach("lists", items, "GetXML");
  Release(items);
  Release(list);
  DO(lists, "RemoveList", Integer(paint));
  TellLine("answers", "list there %" PRId32,
           Use(lists, "ListExists", ARGUMENTS(Text("O'Paint")), QM_ORDERING_BOOLEAN).as.boolean);
  Release(lists);
}

static void Import(const char* tables) {
  const qm_ordering_object importer = Create("OrderHistoryImporter");
  const qm_ordering_object preview =
      Use(importer, "PreviewImports", ARGUMENTS(Text(tables)), QM_ORDERING_OBJECT).as.object;
  TellLine("answers", "import %" PRId32 " orders, %" PRId32 " lines, %" PRId32 " marked",
           GetInteger(preview, "Orders"), GetInteger(preview, "Lines"), GetInteger(preview, "MarkedLines"));
  TellTexts("answers", GetObject(preview, "Failures"));
  Release(preview);
  /* The first one is cancelled after two lines, the second one is whole. */
  int64_t last_line = 2;
  Need(qm_ordering_on_import_progress(importer, Progress, &last_line), "on_import_progress");
  for (int run = 1; run <= 2; ++run) {
    TellLine("answers", "imported %" PRId32,
             Use(importer, "ApplyImports", ARGUMENTS(Text(tables), Boolean(true)), QM_ORDERING_INTEGER)
                 .as.integer);
    TellText("import-header", importer, "LogHeader");
    TellText("import-body", importer, "LogBody");
    last_line = INT64_MAX;
  }
  Release(importer);
}

static void History(void) {
  const qm_ordering_object history = Create("OrderHistory");
  DO(history, "LoadOrders", Integer(0));
  TellLine("answers", "history %" PRId32, GetInteger(history, "Count"));
  qm_ordering_object walk;
  Need(qm_ordering_enumerate(history, &walk), "enumerate");
  int32_t last = 0;
  qm_ordering_value each;
  for (Need(qm_ordering_next(walk, &each), "next"); each.kind != QM_ORDERING_MISSING;
       Need(qm_ordering_next(walk, &each), "next")) {
    const qm_ordering_object previous = each.as.object;
    last = GetInteger(previous, "OrderID");
    const qm_ordering_date date = Get(previous, "SubmitDate", QM_ORDERING_DATE).as.date;
    qm_ordering_value number = Get(previous, "PurchaseOrderNumber", QM_ORDERING_TEXT);
    TellLine("history", "%" PRId32 " %s %" PRId32 "-%" PRId32 "-%" PRId32 " %" PRId64, last,
             number.as.text.data, date.year, date.month, date.day, GetMoney(previous, "OrderTotal"));
    Need(qm_ordering_clear(&number), "clear");
    Do(previous, "LoadSummary");
    const qm_ordering_object details = GetObject(previous, "OrderDetails");
    DO(details, "LoadItems", Integer(0));
    NeedNoError(details, "LoadItems");
    TellText("previous.xml", details, "GetXML");
    Release(details);
    TellText("previous.xml", previous, "GetXML");
    Need(qm_ordering_clear(&each), "clear");
  }
  Release(walk);
  TellText("history.xml", history, "GetXML");
  DO(history, "DeleteOrder", Integer(last));
  Release(history);
  const qm_ordering_object rest = Create("OrderHistory");
  DO(rest, "LoadOrders", Integer(1));
  TellLine("answers", "history %" PRId32, GetInteger(rest, "Count"));
  Release(rest);
}

static void Maintain(void) {
  char backup[4096];
  snprintf(backup, sizeof backup, "%s/backup", g_folder);
  qm_ordering_object texts;
  Need(qm_ordering_check_order_store(&texts), "check");
  TellTexts("answers", texts);
  Need(qm_ordering_repair_order_store(&texts), "repair");
  TellTexts("answers", texts);
  bool done = false;
  Need(qm_ordering_backup_order_store(backup, &texts, CopyProgress, &done), "backup");
  TellTexts("answers", texts);
  TellLine("answers", "copied %d", done);
  qm_ordering_value kept;
  done = false;
  Need(qm_ordering_restore_order_store(backup, &kept, CopyProgress, &done), "restore");
  TellLine("answers", "kept %s, copied %d", kept.as.text.data, done);
  Need(qm_ordering_clear(&kept), "clear");
}

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: %s FOLDER TABLES TOLD\n", argv[0]);
    return 2;
  }
  g_folder = argv[1];
  g_told = argv[3];
  Need(qm_ordering_create_order_store(g_folder), "create_order_store");
  const qm_ordering_settings settings = {UserSetting,       OrderDefault, SetOrderDefault,
                                         SaveOrderDefaults, Registration, Dispose};
  Need(qm_ordering_install_settings(&settings, calloc(1, sizeof(Settings))), "install_settings");
  char statements[] = "statements";
  Need(qm_ordering_set_statement_trace(Trace, statements), "set_statement_trace");
  Order();
  Lists();
  Import(argv[2]);
  History();
  Need(qm_ordering_set_statement_trace(NULL, NULL), "set_statement_trace");
  Maintain();
  return 0;
}
