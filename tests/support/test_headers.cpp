// SPDX-License-Identifier: MIT
// Its headers are compiled for the tests to share.
int main() {
  return 0;
}
