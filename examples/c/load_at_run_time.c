/* SPDX-License-Identifier: MIT */
/* Finds the library only when it runs, so that the program starts without it. The types come from
 * the headers. */
#include <dlfcn.h>
#include <gwq/gwq.h>
#include <stdio.h>

static int PrintBuildDate(void* library) {
  __typeof__(&GWQ_GetVerBuildDate) get_build_date = NULL;
  *(void**)&get_build_date = dlsym(library, "GWQ_GetVerBuildDate");
  if (get_build_date == NULL) return GWQ_BAD_ARGUMENT;
  char date[9] = "";
  const int status = get_build_date(0, 0, 9600, date);
  if (status == GWQ_OK) printf("terminal software of %s\n", date);
  return status;
}

int main(void) {
  void* library = dlopen("libgwq.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const int status = PrintBuildDate(library);
  if (status != GWQ_OK) {
    fprintf(stderr, "no build date: %s\n", GwqStatusCauseOf("GWQ_GetVerBuildDate", status, GWQ_ENGLISH));
  }
  dlclose(library);
  return status == GWQ_OK ? 0 : 1;
}
