/* A host in C that forks while it and another thread hold objects, and looks at what the child may do with
   them. The child and the parent each end as programs do. Argument: a folder in which it makes its order
   store. */

#define _POSIX_C_SOURCE 200809L

#include <inttypes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "qm_ordering/qm_ordering_c.h"

enum { kWrongThread = -2147417842, kStoreUnavailable = -2147467259, kLongestWait = 60 };

static const char* g_folder;
static qm_ordering_object g_order;
static qm_ordering_object g_released;
static pthread_barrier_t g_barrier;
static int g_is_child = 0;

/* The leak checker asks for this by name. What the other thread held is nobody's in the child, which fork
   made without that thread. */
__attribute__((visibility("default"))) int __lsan_is_turned_off(void);
int __lsan_is_turned_off(void) {
  return g_is_child;
}

static void Expect(int32_t expected, int32_t number, const char* what) {
  if (number != expected) {
    qm_ordering_failure failure = {0};
    qm_ordering_get_failure(&failure);
    fprintf(stderr, "%s answers %" PRId32 ", not %" PRId32 ": %s\n", what, number, expected,
            failure.description.data == NULL ? "" : failure.description.data);
    _exit(1);
  }
}

static void ExpectText(const char* part) {
  qm_ordering_failure failure;
  Expect(0, qm_ordering_get_failure(&failure), "get_failure");
  if (strstr(failure.description.data, part) == NULL) {
    fprintf(stderr, "\"%s\" does not say \"%s\"\n", failure.description.data, part);
    _exit(1);
  }
}

static int32_t UserSetting(const char* key, qm_ordering_reply* value, void* payload) {
  (void)payload;
  return strcmp(key, "OrderingDatabasePath") == 0 ? qm_ordering_answer(value, g_folder, strlen(g_folder)) : 0;
}

static const qm_ordering_settings g_settings = {UserSetting, NULL, NULL, NULL, NULL, NULL};

/* Holds objects while the process is forked, and has released one of the main thread's. */
static void* HoldObjects(void* unused) {
  (void)unused;
  qm_ordering_object order;
  qm_ordering_object item;
  Expect(0, qm_ordering_install_settings(&g_settings, NULL), "install_settings");
  Expect(0, qm_ordering_create("CurrentOrder", &order), "create");
  Expect(0, qm_ordering_create("OrderItem", &item), "create");
  Expect(0, qm_ordering_release(g_released), "release");
  pthread_barrier_wait(&g_barrier);
  pthread_barrier_wait(&g_barrier);
  Expect(0, qm_ordering_call(order, "ItemCount", NULL, 0, NULL), "ItemCount");
  return NULL;
}

static void UseAsChild(void) {
  const char* name;
  qm_ordering_value value;
  qm_ordering_object object;
  /* What was the parent's is refused, and stays the parent's. */
  Expect(kWrongThread, qm_ordering_get(g_order, "OrderDetails", NULL, 0, &value), "get");
  ExpectText("before this process was forked");
  Expect(kWrongThread, qm_ordering_release(g_order), "release");
  Expect(kWrongThread, qm_ordering_retain(g_order), "retain");
  Expect(kWrongThread, qm_ordering_class_name(g_order, &name), "class_name");
  Expect(kWrongThread, qm_ordering_release(g_released), "release");
  Expect(91, qm_ordering_release(UINT64_MAX), "release");
  /* What needs no store is the child's own. */
  Expect(0, qm_ordering_create("OrderItem", &object), "create");
  const qm_ordering_value quantity = {.kind = QM_ORDERING_INTEGER, .as.integer = 3};
  Expect(0, qm_ordering_put(object, "Quantity", &quantity), "put");
  Expect(0, qm_ordering_get(object, "Quantity", NULL, 0, &value), "get");
  if (value.as.integer != 3) {
    fprintf(stderr, "The quantity is %" PRId32 "\n", value.as.integer);
    _exit(1);
  }
  Expect(0, qm_ordering_release(object), "release");
  /* The store is refused. */
  Expect(kStoreUnavailable, qm_ordering_check_order_store(&object), "check");
  ExpectText("forked");
  /* One is left to the child's end. */
  Expect(0, qm_ordering_create("OrderItems", &object), "create");
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
    return 2;
  }
  g_folder = argv[1];
  Expect(0, qm_ordering_create_order_store(g_folder), "create_order_store");
  Expect(0, qm_ordering_install_settings(&g_settings, NULL), "install_settings");
  Expect(0, qm_ordering_create("CurrentOrder", &g_order), "create");
  Expect(0, qm_ordering_create("OrderItem", &g_released), "create");
  pthread_t thread;
  if (pthread_barrier_init(&g_barrier, NULL, 2) != 0 ||
      pthread_create(&thread, NULL, HoldObjects, NULL) != 0) {
    return 1;
  }
  pthread_barrier_wait(&g_barrier);
  const pid_t child = fork();
  if (child == 0) {
    /* A child that waits for what the other thread held would do so for good. */
    alarm(kLongestWait);
    g_is_child = 1;
    UseAsChild();
    puts("child");
    return 0;
  }
  int status = 1;
  if (waitpid(child, &status, 0) != child || status != 0) {
    fprintf(stderr, "The child ended with status %d\n", status);
    return 1;
  }
  pthread_barrier_wait(&g_barrier);
  pthread_join(thread, NULL);
  /* The parent goes on as if nothing had been. */
  Expect(0, qm_ordering_call(g_order, "ItemCount", NULL, 0, NULL), "ItemCount");
  Expect(91, qm_ordering_retain(g_released), "retain");
  puts("parent");
  return 0;
}
