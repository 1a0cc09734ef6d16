/* SPDX-License-Identifier: MIT */
/* Asks the customer on USB how the service was. Exit status 0 when there is a rating. */
#include <gwq/gwq.h>
#include <stdio.h>

enum { kBaud = 115200, kSeconds = 30, kStars = 5 };

static int Failed(const char* function, int status) {
  fprintf(stderr, "no rating: %s\n", GwqStatusCauseOf(function, status, GWQ_ENGLISH));
  return 0;
}

/* A character "1" to "3" as keyed, "4" for a customer who does not rate, or nothing. Returns 1 when
 * it was asked for. */
static int Rate(char rating[2]) {
  int status = MP_SetEvaluateInfo(NULL, NULL, kBaud, "王芳", "0123", kStars, NULL);
  if (status != GWQ_OK) return Failed("MP_SetEvaluateInfo", status);
  status = MP_StartEvaluate(NULL, NULL, kBaud, kSeconds, rating);
  return status == GWQ_OK ? 1 : Failed("MP_StartEvaluate", status);
}

int main(void) {
  char rating[2] = "";
  if (!Rate(rating) || rating[0] == '\0') return 1;
  printf("rating: %s\n", rating);
  return 0;
}
