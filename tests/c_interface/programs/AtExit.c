// A host that reads what a class offers when it ends, after the library's own work at the end.
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "qm_ordering/qm_ordering_c.h"

static const qm_ordering_class* g_class = NULL;

static void require(int holds, const char* what) {
  if (!holds) {
    fprintf(stderr, "It does not hold that %s.\n", what);
    _Exit(1);
  }
}

static void read_at_the_end(void) {
  const qm_ordering_class* again = NULL;
  require(qm_ordering_describe("OrderItem", &again) == 0, "a class can be described at the end");
  require(again == g_class, "it is where it was");
  require(strcmp(g_class->name, "OrderItem") == 0 && g_class->member_count > 10, "it is as it was");
  for (size_t i = 0; i < g_class->member_count; ++i) {
    const qm_ordering_member* member = &g_class->members[i];
    require(strlen(member->name) > 0, "each member has a name");
    for (size_t j = 0; j < member->parameter_count; ++j) {
      require(strlen(member->parameters[j].name) > 0, "each parameter has a name");
    }
  }
  puts("read at the end");
}

int main(void) {
  // First, so that it runs last.
  require(atexit(read_at_the_end) == 0, "there is room for a function at the end");
  require(qm_ordering_describe("OrderItem", &g_class) == 0, "a class can be described");
  return 0;
}
