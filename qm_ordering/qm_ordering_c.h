#ifndef QM_ORDERING_QM_ORDERING_C_H
#define QM_ORDERING_QM_ORDERING_C_H

// The library for hosts in C, and in every language that calls C. Objects are made by the names of their
// classes and used by the names of their members; qm_ordering_describe says what there is.
//
//     qm_ordering_object order = 0;
//     if (qm_ordering_create("CurrentOrder", &order) != 0) { ... }
//     qm_ordering_value count = {0};
//     qm_ordering_call(order, "ItemCount", NULL, 0, &count);
//     qm_ordering_release(order);
//
// What holds for every function:
//
// - It answers 0, or the number of the failure (see the table in the README). qm_ordering_get_failure then
//   has the failure's text. What it would have given is a missing value, 0 or NULL then. Nothing is thrown,
//   and a function never ends the program.
// - A failure of the call is one thing, the error record of an object (its property Error) another, as in
//   C++: most members of orders and lists report through the record, and the call answers 0.
// - Class and member names are zero-terminated, in any letter case. Texts are UTF-8 with their length and may
//   hold zero bytes. A NULL where a pointer is needed is failure 5.
// - Texts, values and structures that a host hands over are only read during the call. A value that the
//   library gives belongs to the host, who ends it with qm_ordering_clear.
// - An object stays with the thread that made it. Another thread, or a process that was forked from its own,
//   gets failure -2147417842. What a thread still holds ends with it.
// - A callback runs on the thread that called the library, within that call. It must not let an exception or
//   a longjmp through. It may use the library, where the function that took it does not say otherwise.

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
// What the library exports.
#define QM_ORDERING_C_API __attribute__((visibility("default")))
#else
#define QM_ORDERING_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

// A reference to an object. It is a number, not an address: one that was released is refused, never
// undefined. 0 is no object. One object has one number on its thread, however it was reached.
typedef uint64_t qm_ordering_object;

// What a value is.
enum {
  QM_ORDERING_MISSING =
      0,                  // an argument that is not given, or no further member; a value of zero bytes is so
  QM_ORDERING_EMPTY = 1,  // never assigned; what a method gives that answers nothing
  QM_ORDERING_NULL = 2,   // the store's "no value"
  QM_ORDERING_BOOLEAN = 3,   // as.boolean
  QM_ORDERING_INTEGER = 4,   // as.integer
  QM_ORDERING_DOUBLE = 5,    // as.number
  QM_ORDERING_CURRENCY = 6,  // as.currency
  QM_ORDERING_DATE = 7,      // as.date
  QM_ORDERING_TEXT = 8,      // as.text
  QM_ORDERING_OBJECT = 9     // as.object
};

// A point in time, as the user's clock shows it. The zero date is 1899-12-30 00:00:00.
typedef struct qm_ordering_date {
  int32_t year;    // 100 to 9999
  int32_t month;   // 1 to 12
  int32_t day;     // 1 to the month's last
  int32_t hour;    // 0 to 23
  int32_t minute;  // 0 to 59
  int32_t second;  // 0 to 59
} qm_ordering_date;

// A text in UTF-8. Those that the library gives have a zero byte behind them, which is not counted.
typedef struct qm_ordering_text {
  const char* data;  // may be NULL for the empty text
  size_t length;     // in bytes
} qm_ordering_text;

// A value with its kind.
typedef struct qm_ordering_value {
  int32_t kind;  // QM_ORDERING_MISSING ...
  union {
    int32_t boolean;            // 0 is false, anything else true; the library gives 1
    int32_t integer;            // 32 bits
    double number;              // a number with a fraction
    int64_t currency;           // money in ten-thousandths: 12.5 is 125000
    qm_ordering_date date;      // a point in time
    qm_ordering_text text;      // a text
    qm_ordering_object object;  // an object; 0 for an empty reference
  } as;                         // what the kind says
} qm_ordering_value;

// A failure. The texts stay as they are until the function that gave it is called again on the same thread.
typedef struct qm_ordering_failure {
  int32_t number;                // 0 for none
  qm_ordering_text description;  // what failed, on which file, why, and what to do about it
  qm_ordering_text operation;    // of qm_ordering_last_failure: the member that caught it; else empty
} qm_ordering_failure;

// What a member is.
enum {
  QM_ORDERING_PROPERTY_GET = 0,  // a value that is read
  QM_ORDERING_PROPERTY_LET = 1,  // a value that is written
  QM_ORDERING_PROPERTY_SET = 2,  // a reference to an object that is written
  QM_ORDERING_METHOD = 3         // a call
};

// A parameter of a method, or the value that is written to a property.
typedef struct qm_ordering_parameter {
  const char* name;                 // "lvSortType"
  const char* type;                 // as that of a member
  int32_t is_optional;              // 1 when it may be left out
  qm_ordering_value default_value;  // what it is then; missing when the member itself looks at that
} qm_ordering_parameter;

// A member of a class. A property that can be read and written is there twice.
typedef struct qm_ordering_member {
  const char* name;        // "LoadItems"
  int32_t kind;            // QM_ORDERING_PROPERTY_GET ...
  const char* type;        // of what is read or answered: "Boolean", "Integer", "Currency", "Date", "String",
                           // "Variant" or a class; empty for nothing
  int32_t is_default;      // 1 for the member that an empty name means
  size_t parameter_count;  // how many
  const qm_ordering_parameter* parameters;  // in their order
} qm_ordering_member;

// What a class offers. It belongs to the library, is there as long as that is loaded, and any thread may read
// it.
typedef struct qm_ordering_class {
  const char* name;                   // "OrderItems"
  int32_t is_creatable;               // 1 when qm_ordering_create makes one
  const char* element_type;           // what an enumeration of a collection gives; empty for other classes
  size_t member_count;                // how many
  const qm_ordering_member* members;  // in the order of the reference
} qm_ordering_class;

// The version of the library, "1.2.3". Belongs to the library.
QM_ORDERING_C_API int32_t qm_ordering_version(const char** version);

// The failure that the last failing function of this header answered on this thread; number 0 before the
// first one. The callers own nothing of it.
QM_ORDERING_C_API int32_t qm_ordering_get_failure(qm_ordering_failure* failure);

// The last failure that the library caught on this thread, which a member swallowed or turned into an error
// record; number 0 for none since the start or the last clear. The caller owns nothing of it.
QM_ORDERING_C_API int32_t qm_ordering_last_failure(qm_ordering_failure* failure);
// Forgets it, so that a host can tell what the calls that follow swallow.
QM_ORDERING_C_API int32_t qm_ordering_clear_last_failure(void);

// Makes an object of the class, "QM_Ordering.CurrentOrder" or "CurrentOrder"; the first one on a thread runs
// the thread's start-up. The caller owns one reference. 429 for a class that there is not.
QM_ORDERING_C_API int32_t qm_ordering_create(const char* class_name, qm_ordering_object* object);

// Adds a reference to the caller's. 91 for 0 and for an object that was released.
QM_ORDERING_C_API int32_t qm_ordering_retain(qm_ordering_object object);
// Takes one of the caller's references away; the object ends with the last one. 0 is left alone. The one
// function that any thread may call: another thread's object ends at that thread's next call that uses one,
// or with the thread; so it is not known whether that still has it. 91 for an object of this thread that was
// released, -2147417842 in a process that was forked meanwhile, 7 when there is no memory to tell the other
// thread, which then keeps the object.
QM_ORDERING_C_API int32_t qm_ordering_release(qm_ordering_object object);

// Ends a value that the library gave: frees its text, releases its object, and makes it missing. Values of
// other kinds hold nothing, but may be given to it, too. A value that the host filled is not for it.
QM_ORDERING_C_API int32_t qm_ordering_clear(qm_ordering_value* value);

// Reads a property, or what a method answers. Arguments only where the class says so: NULL, 0. member "" or
// NULL is the default member, Item of a collection. result may be NULL. A text or an object in it is the
// caller's. 91 for no object, 438 for a member that there is not, 450 and 449 for too many arguments and a
// lacking one, 13, 6 or 94 for an argument that cannot be converted, 5 for a kind or a date that there is
// not, 91 and -2147417842 for an argument's object that was released or is another thread's; and what the
// member raises.
QM_ORDERING_C_API int32_t qm_ordering_get(qm_ordering_object object, const char* member,
                                          const qm_ordering_value* arguments, size_t count,
                                          qm_ordering_value* result);
// Writes a property; an object's for a reference, which it shares. Fails as qm_ordering_get, and with 383 for
// a property that can only be read.
QM_ORDERING_C_API int32_t qm_ordering_put(qm_ordering_object object, const char* member,
                                          const qm_ordering_value* value);
// Calls a method, or reads a property. Arguments that may be left out are so at the end, or as missing
// values. Otherwise as qm_ordering_get.
QM_ORDERING_C_API int32_t qm_ordering_call(qm_ordering_object object, const char* member,
                                           const qm_ordering_value* arguments, size_t count,
                                           qm_ordering_value* result);

// Begins a walk over a collection. The caller owns one reference to the enumeration, which keeps the
// collection alive; members that are added meanwhile are met at the end. 438 for what is no collection.
QM_ORDERING_C_API int32_t qm_ordering_enumerate(qm_ordering_object object, qm_ordering_object* enumeration);
// The next member, which is the caller's; a missing value when there are no more. After failure 7 the walk
// may have passed a member that it did not give: begin a new one.
QM_ORDERING_C_API int32_t qm_ordering_next(qm_ordering_object enumeration, qm_ordering_value* member);

// The class of an object, "CurrentOrder". Belongs to the library.
QM_ORDERING_C_API int32_t qm_ordering_class_name(qm_ordering_object object, const char** class_name);
// All classes, those that are made by name before those that members answer. They belong to the library.
QM_ORDERING_C_API int32_t qm_ordering_classes(const qm_ordering_class* const** classes, size_t* count);
// What a class offers. Belongs to the library. 429 for a class that there is not.
QM_ORDERING_C_API int32_t qm_ordering_describe(const char* class_name, const qm_ordering_class** description);

// How a callback answers a text: the value that was asked for, or the description of its failure. It is there
// during the callback alone.
typedef struct qm_ordering_reply qm_ordering_reply;
// Sets the text of the reply, of which the library makes a copy. 5 for a NULL, 7 when memory ends, which is
// then the callback's failure, too; qm_ordering_get_failure does not tell of either.
QM_ORDERING_C_API int32_t qm_ordering_answer(qm_ordering_reply* reply, const char* data, size_t length);

// A settings component of the host. Every function answers 0, or the number of a failure whose description is
// the reply; the failure rises to who called the library, or is in the error record where that is due. A NULL
// function but user_setting stands for one that knows nothing and keeps nothing. Keys and field names are
// zero-terminated.
typedef struct qm_ordering_settings {
  // The user's setting of that key; the empty text when it is unset.
  int32_t (*user_setting)(const char* key, qm_ordering_reply* value, void* payload);
  // The order default of that DEFAULT_ key; the empty text when it is unset.
  int32_t (*order_default)(const char* key, qm_ordering_reply* value, void* payload);
  // Sets an order default; an empty one unsets it. It counts from save_order_defaults on.
  int32_t (*set_order_default)(const char* key, const char* data, size_t length, qm_ordering_reply* reply,
                               void* payload);
  // Called after the last set_order_default: what was set must be kept when it returns.
  int32_t (*save_order_defaults)(qm_ordering_reply* reply, void* payload);
  // A field of the user's registration: "City", "CompanyName", "Address1", "Address2", "Fax", "Telephone",
  // "TelephoneExt", "Country", "Email", "FirstName", "LastName", "State", "StateOr", "ZipOrPostCode",
  // "AccountNumber".
  int32_t (*registration)(const char* field, qm_ordering_reply* value, void* payload);
  // Called once when the library is done with the component: when another takes its place, or its thread
  // ends, in which case the library makes no more objects.
  void (*dispose)(void* payload);
} qm_ordering_settings;

// Chooses this thread's settings component, before the thread's first object; NULL for the library's own. The
// functions are copied; the payload must be there until dispose. 5 once the thread's start-up has run, 91 for
// a component without user_setting; dispose is not called then.
QM_ORDERING_C_API int32_t qm_ordering_install_settings(const qm_ordering_settings* settings, void* payload);
// Chooses the library's own component over that file; NULL or an empty name for the default file.
QM_ORDERING_C_API int32_t qm_ordering_install_settings_file(const char* file);

// Shows a statement before it runs. Answers 0, or the number of a failure that stops the statement, with the
// reply as its description.
typedef int32_t (*qm_ordering_trace)(const char* data, size_t length, qm_ordering_reply* reply,
                                     void* payload);
// Shows this thread's statements from now on, each as the library built it; NULL ends it. The texts hold
// customers' data. The trace may use the library, but not the object whose statement it shows, which fails
// with 5 in the middle of its work on the store; and what another object writes waits in vain, and fails
// after five seconds, where the statement belongs to a transaction. The payload must be there until another
// one is set, or the thread has ended.
QM_ORDERING_C_API int32_t qm_ordering_set_statement_trace(qm_ordering_trace trace, void* payload);

// How far an import is: purchase orders begun, lines done, lines that there are. Answers 0 and leaves *go_on
// at 1, or sets it to 0 to cancel the import; or the number of a failure that ends the import as one of its
// own would, and then is what the call answers, with the reply as its description. It may not use the order
// store.
typedef int32_t (*qm_ordering_import_progress)(int64_t orders, int64_t lines, int64_t lines_in_all,
                                               int32_t* go_on, qm_ordering_reply* reply, void* payload);
// Follows the imports of an OrderHistoryImporter from now on; NULL ends it. The payload must be there until
// another one is set, or the object has ended. 13 for an object of another class.
QM_ORDERING_C_API int32_t qm_ordering_on_import_progress(qm_ordering_object importer,
                                                         qm_ordering_import_progress progress, void* payload);

// Makes a new, empty order store: the file Orders.mdb in the folder, with the folders that are missing. 75
// when the file exists or cannot be made, 76 for a folder that no store can be in.
QM_ORDERING_C_API int32_t qm_ordering_create_order_store(const char* folder);
// The full path of this thread's store, a text; the file need not exist.
QM_ORDERING_C_API int32_t qm_ordering_order_store_path(qm_ordering_value* path);
// Examines this thread's store and changes nothing. Gives a collection of texts, a finding each; it is empty
// when all is well.
QM_ORDERING_C_API int32_t qm_ordering_check_order_store(qm_ordering_object* findings);
// Sets the totals that do not fit their lines. Gives a collection of texts, a change each.
QM_ORDERING_C_API int32_t qm_ordering_repair_order_store(qm_ordering_object* changes);

// How far a copy of the store is, in pages. Answers 0, or the number of a failure that ends the work, which
// has changed nothing then, with the reply in its description.
typedef int32_t (*qm_ordering_store_progress)(int64_t done, int64_t in_all, qm_ordering_reply* reply,
                                              void* payload);
// Copies this thread's store as it is at one moment into one whole file. Gives a collection of texts: the
// orders whose total does not fit their lines, which is no damage. progress may be NULL.
QM_ORDERING_C_API int32_t qm_ordering_backup_order_store(const char* file, qm_ordering_object* findings,
                                                         qm_ordering_store_progress progress, void* payload);
// Puts a backup in the place of this thread's store, which no program may have open. Gives the path under
// which the replaced one is kept, a text; empty when there was none. progress may be NULL.
QM_ORDERING_C_API int32_t qm_ordering_restore_order_store(const char* file, qm_ordering_value* kept,
                                                          qm_ordering_store_progress progress, void* payload);

#ifdef __cplusplus
}
#endif

#endif
