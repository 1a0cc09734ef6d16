/* SPDX-License-Identifier: MIT */
/* A host in C that is linked against the library: it can name every function, and shares its data. */
#include <stdio.h>
#include <string.h>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include "abi/descriptor_layout.h"
#include "abi/extra_layout.h"

#include "redeclarations.h"

typedef void (*AnyFunction)(void);

static const struct {
  const char* name;
  AnyFunction function;
} g_functions[] = {
#include "function_table.h"
};

static const struct {
  const char* name;
  const volatile void* datum;
} g_data[] = {
#include "data_table.h"
};

static int CountFunctions(void) {
  int count = 0;
  for (size_t i = 0; i < sizeof g_functions / sizeof g_functions[0]; ++i) {
    if (g_functions[i].function == NULL) {
      printf("%s has no address\n", g_functions[i].name);
    } else {
      ++count;
    }
  }
  return count;
}

static int CountData(void) {
  int count = 0;
  for (size_t i = 0; i < sizeof g_data / sizeof g_data[0]; ++i) {
    if (g_data[i].datum == NULL) {
      printf("%s has no address\n", g_data[i].name);
    } else {
      ++count;
    }
  }
  return count;
}

int main(void) {
  unsigned char byte = 0;
  printf("functions %d data %d\n", CountFunctions(), CountData());
  printf("version %s\n", dllversion);
  printf("Merge %d", Merge("4G", 2, &byte, 1));
  printf(" %02X\n", (unsigned)byte);
  printf("g_CancelWrite %d\n", g_CancelWrite);
  CancelWrite();
  printf("g_CancelWrite %d\n", g_CancelWrite);
  printf("status %s: %s\n", GwqStatusName(GWQ_NO_FILE), GwqStatusCause(GWQ_NO_FILE, GWQ_CHINESE));
  printf("CheckDeviceId %d\n", CheckDeviceId("st_12345678"));
  return 0;
}
