// SPDX-License-Identifier: MIT
#include <gwq/frame/transaction.h>

#include <gwq/status_codes.h>
#include "frame/internal/exchange.h"

namespace gwq {

int TransProcByEnd(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                   GwqEndOfRead end, int timeout_ms) {
  return Exchange(kAsk, {port, baud}, {command, commandLen}, {end, timeout_ms}, {answer, answerLen});
}

int TransProc(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
              int timeout_ms) {
  return TransProcByEnd(port, baud, command, commandLen, answer, answerLen, &EndOfRead2, timeout_ms);
}

// Contract: differs from TransProcForInfo in its read failure alone.
int TransProcForEva(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                    int timeout_ms) {
  return Exchange(kAsk, {port, baud}, {command, commandLen}, {&EndOfRead3, timeout_ms}, {answer, answerLen},
                  GWQ_EVALUATION_READ);
}

int TransProcForInfo(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                     int timeout_ms) {
  return TransProcByEnd(port, baud, command, commandLen, answer, answerLen, &EndOfRead3, timeout_ms);
}

int TransProcOnlySend(int port, int baud, char* command, int commandLen, int timeout_ms) {
  return RunExchange(kTell, {port, baud}, {command, commandLen}, {&EndOfRead2, timeout_ms}, nullptr);
}

// Contract: the answer's arguments are ignored.
int TransProcOnlyWrite(int port, int baud, char* command, int commandLen, char* /*answer*/,
                       int* /*answerLen*/, int timeout_ms) {
  return TransProcOnlySend(port, baud, command, commandLen, timeout_ms);
}

int TransProcOnlyRead(int port, int baud, char* answer, int* answerLen, int timeout_ms) {
  return Exchange(kListen, {port, baud}, {}, {&EndOfRead3, timeout_ms}, {answer, answerLen});
}

}  // namespace gwq

using namespace gwq;

int min(int a, int b) {
  return a < b ? a : b;
}
