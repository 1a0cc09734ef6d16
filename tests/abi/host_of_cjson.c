/* SPDX-License-Identifier: MIT */
/* A host that is linked against the library alone and uses cJSON: one implementation serves it, the
 * library's own JSON call and a libcjson that is loaded beside it. */
#include <cjson/cJSON.h>
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <gwq/gwq.h>

static int g_allocations;

static void* Allocate(size_t size) {
  ++g_allocations;
  return malloc(size);
}

static int CountedSinceLast(void) {
  const int count = g_allocations;
  g_allocations = 0;
  return count;
}

static void UseOwnNames(void) {
  cJSON* const object = cJSON_Parse("{\"rating\": [1, 2, 3]}");
  const cJSON* const last = cJSON_GetArrayItem(cJSON_GetObjectItem(object, "rating"), 2);
  char* const text = cJSON_PrintUnformatted(object);
  printf("last %d text %s\n", last == NULL ? -1 : last->valueint, text == NULL ? "" : text);
  cJSON_free(text);
  cJSON_Delete(object);
}

static void UseLibcjson(void) {
  void* const library = dlopen("libcjson.so.1", RTLD_LAZY);
  typedef cJSON* Parse(const char* text);
  Parse* parse = NULL;
  void* const found = library == NULL ? NULL : dlsym(library, "cJSON_Parse");
  memcpy(&parse, &found, sizeof parse);
  cJSON_Delete(parse == NULL ? NULL : parse("[1]"));
}

int main(void) {
  cJSON_Hooks hooks = {&Allocate, &free};
  char description[4096] = "";
  int length = sizeof description;
  UseOwnNames();
  printf("without hooks %s\n", CountedSinceLast() == 0 ? "none" : "some");
  cJSON_InitHooks(&hooks);
  UseOwnNames();
  printf("own names %s\n", CountedSinceLast() > 0 ? "counted" : "not counted");
  DEV_CommCall("{}", 0, description, &length);
  printf("the library %s\n", CountedSinceLast() > 0 ? "counted" : "not counted");
  UseLibcjson();
  printf("libcjson %s\n", CountedSinceLast() > 0 ? "counted" : "not counted");
  cJSON_InitHooks(NULL);
  UseOwnNames();
  printf("hooks taken back %s\n", CountedSinceLast() == 0 ? "none" : "some");
  return 0;
}
