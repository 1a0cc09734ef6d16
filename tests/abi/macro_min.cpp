// SPDX-License-Identifier: MIT
// Compiled after the headers, with a macro min of the host's: it still is the host's.
int Smaller(int a, int b);

int Smaller(int a, int b) {
  return min(a, b);
}
