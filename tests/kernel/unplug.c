/* SPDX-License-Identifier: MIT */
/* Waits for a customer's PIN until somebody unplugs the terminal, and goes on once it is plugged in again. */
#include <gwq/gwq.h>
#include <stdio.h>
#include <unistd.h>

enum { kBaud = 9600, kEntrySeconds = 20, kSecondsToReturn = 120 };

static int BuildDateStatus(void) {
  char date[9] = "";
  return GWQ_GetVerBuildDate(0, 0, kBaud, date);
}

static int Expect(const char* what, int status, int expected) {
  printf("%s: status %d\n", what, status);
  if (status != expected) printf("expected %d\n", expected);
  return status == expected;
}

static int IsBackSoon(void) {
  for (int i = 0; i < kSecondsToReturn; ++i) {
    if (BuildDateStatus() == GWQ_OK) return 1;
    sleep(1);
  }
  return 0;
}

int main(void) {
  char pin[16] = "";
  setvbuf(stdout, NULL, _IOLBF, 0);
  if (!Expect("plugged in", BuildDateStatus(), GWQ_OK)) return 1;
  const int status = GWQ_ReadPin(0, kBaud, 0, kEntrySeconds, pin, sizeof pin - 1);
  if (!Expect("unplugged while a PIN was read", status, GWQ_READ_FAILED)) return 1;
  if (pin[0] != '\0') return 1;
  if (!Expect("unplugged", BuildDateStatus(), GWQ_NOT_OPENED)) return 1;
  if (!IsBackSoon()) return 1;
  puts("plugged in again: works");
  return 0;
}
