#include <gwq/frame/transaction.h>

#include <gwq/frame/port.h>
#include "codec/internal/secret_text.h"
#include "frame/internal/exchange.h"

namespace gwq {
namespace {

constexpr Member kTransProc{.opening_log = " TransProc  nPort=%d",
                            .logs_identities = true,
                            .logs_before_send = true,
                            .sends = true,
                            .ends_with_call = true};
constexpr Member kOnlySend{.opening_log = "TransProc nPort=%d \n",
                           .logs_identities = true,
                           .logs_before_send = false,
                           .sends = true,
                           .ends_with_call = false};  // a screen is closed also after a cancel
constexpr Member kOnlyRead{.opening_log = " TransProcOnlyRead  nPort=%d",
                           .logs_identities = true,
                           .logs_before_send = false,
                           .sends = false,
                           .ends_with_call = true};

// An answer read as text.
class TextAnswer final : public Receiver {
 public:
  TextAnswer(char* answer, int* length, int read_failure)
      : answer_(answer), length_(length), read_failure_(read_failure) {}

  // Only a reading member with somewhere to put the answer and its length reads at all.
  Receiver* OrNone() { return answer_ == nullptr || length_ == nullptr ? nullptr : this; }

  int Receive(const ExchangeTurn& turn) override {
    const int result = ICC_ReadDataFromTransPort(reinterpret_cast<unsigned char*>(answer_), *length_);
    if (turn.Lost()) return read_failure_;
    if (result == 0) return GWQ_NO_ANSWER;
    if (result < 0) return result == GWQ_LINK_CANCELLED ? static_cast<int>(GWQ_CANCELLED) : read_failure_;
    *length_ = static_cast<int>(SecretLength(answer_));
    return GWQ_OK;
  }

 private:
  char* answer_;
  int* length_;
  int read_failure_;
};

}  // namespace
}  // namespace gwq

int min(int a, int b) {
  return a < b ? a : b;
}

int TransProc(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
              int timeout_ms) {
  return TransProcByEnd(port, baud, command, commandLen, answer, answerLen, &EndOfRead2, timeout_ms);
}

int TransProcByEnd(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                   GwqEndOfRead end, int timeout_ms) {
  gwq::TextAnswer text(answer, answerLen, GWQ_READ_FAILED);
  return gwq::RunExchange(gwq::kTransProc, {port, baud, timeout_ms, end}, {command, commandLen},
                          text.OrNone());
}

int TransProcForEva(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                    int timeout_ms) {
  gwq::TextAnswer text(answer, answerLen, GWQ_EVALUATION_READ);
  return gwq::RunExchange(gwq::kTransProc, {port, baud, timeout_ms, &EndOfRead3}, {command, commandLen},
                          text.OrNone());
}

int TransProcForInfo(int port, int baud, char* command, int commandLen, char* answer, int* answerLen,
                     int timeout_ms) {
  return TransProcByEnd(port, baud, command, commandLen, answer, answerLen, &EndOfRead3, timeout_ms);
}

int TransProcOnlyWrite(int port, int baud, char* command, int commandLen, char* /*answer*/,
                       int* /*answerLen*/, int timeout_ms) {
  return TransProcOnlySend(port, baud, command, commandLen, timeout_ms);
}

int TransProcOnlySend(int port, int baud, char* command, int commandLen, int timeout_ms) {
  return gwq::RunExchange(gwq::kOnlySend, {port, baud, timeout_ms, &EndOfRead2}, {command, commandLen},
                          nullptr);
}

int TransProcOnlyRead(int port, int baud, char* answer, int* answerLen, int timeout_ms) {
  gwq::TextAnswer text(answer, answerLen, GWQ_READ_FAILED);
  return gwq::RunExchange(gwq::kOnlyRead, {port, baud, timeout_ms, &EndOfRead3}, {}, text.OrNone());
}
