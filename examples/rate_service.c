/* Asks the customer on USB how the service was. Exit status 0 when there is a rating. */
#include <gwq.h>
#include <stdio.h>

enum { kBaud = 115200, kSeconds = 30, kStars = 5 };

/* A character "1" to "3" as keyed, "4" for the terminal's key 0, or nothing. */
static int Rate(char rating[2]) {
  const int status = MP_SetEvaluateInfo(NULL, NULL, kBaud, "王芳", "0123", kStars, NULL);
  return status == GWQ_OK ? MP_StartEvaluate(NULL, NULL, kBaud, kSeconds, rating) : status;
}

int main(void) {
  char rating[2] = "";
  const int status = Rate(rating);
  if (status != GWQ_OK || rating[0] == '\0') {
    fprintf(stderr, "no rating: %s\n", GwqStatusCause(status, GWQ_ENGLISH));
    return 1;
  }
  printf("rating: %s\n", rating);
  return 0;
}
