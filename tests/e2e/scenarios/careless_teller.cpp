// SPDX-License-Identifier: MIT
// A teller application that does all wrong: it has something signed without waiting for it, leaves
// the teller's card on the screen, and says that all is well. With an argument it stays a while
// instead of showing the card.
#include <gwq/gwq.h>
#include <unistd.h>

int main(int argc, char**) {
  char sign[] =
      "\x1B[2YCNEWSTARTSIGN\x02"
      "0|30|1,300,100|/tmp/capture.png\x03";
  char answer[2048] = "";
  int length = 1024;
  (void)TransProc(0, 115200, sign, sizeof sign - 1, answer, &length, 50);
  if (argc > 1) return static_cast<int>(sleep(6));
  (void)MP_StartElectronicCard(nullptr, nullptr, 115200, 30, "A", "1", 0, nullptr);
  return 0;
}
