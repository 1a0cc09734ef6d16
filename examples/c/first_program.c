/* SPDX-License-Identifier: MIT */
/* Asks the terminal on USB for its build date. */
#include <gwq/gwq.h>
#include <stdio.h>

int main(void) {
  char date[9] = "";
  const int status = GWQ_GetVerBuildDate(0, 0, 9600, date);
  if (status != GWQ_OK) {
    fprintf(stderr, "%s\n", GwqStatusCauseOf("GWQ_GetVerBuildDate", status, GWQ_ENGLISH));
    return 1;
  }
  printf("terminal software of %s\n", date);
  return 0;
}
