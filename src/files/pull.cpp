// SPDX-License-Identifier: MIT
#include <gwq/files/pull.h>

#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string_view>

#include <gwq/frame/port.h>
#include "diag/internal/pause.h"
#include "files/internal/file.h"
#include "files/internal/pull_reception.h"
#include "files/internal/transfer.h"
#include "frame/internal/cancel.h"
#include "frame/internal/device_command.h"
#include "frame/internal/exchange.h"
#include "frame/internal/progress.h"

namespace gwq {
namespace {

constexpr int kTimeoutMs = 3000;
constexpr int kPausePerReportMs = 10;
constexpr std::size_t kMaxFileSize = 256U << 20U;

// Contract: a pull begins even if its call is cancelled; it tells whether there is a signature.
constexpr ExchangeKind kPull{.opening_log = nullptr,
                             .logs_identities = false,
                             .logs_before_send = false,
                             .sends = true,
                             .ends_with_call = false};

// Receives one file on the open link.
class FileReceiver final : public Receiver, private PullPort {
 public:
  FileReceiver(const char* path, Progress& progress) : path_(path), progress_(progress) {}

  int Receive(const ExchangeTurn& /*turn*/) override {
    int got = ReadReport();
    // Contract: the local file is created even if nothing was read; a time-out leaves it empty.
    file_ = OpenFile(path_, "wb");
    if (!file_) return GWQ_READ_FAILED;
    PullReception reception(*this);
    while (got >= 1 && !ReadCancelRequested() && stored_ <= kMaxFileSize) {
      AllowThreadCancel();
      switch (reception.HandleReport(ReportView(report_.data(), kReportSize))) {
        case PullReception::Result::kFileDone:
          return CloseComplete() ? GWQ_OK : GWQ_READ_FAILED;
        case PullReception::Result::kRejected:
          RemovePartialFile();
          return GWQ_REFUSED;
        default:
          if (progress_.IsDue() && !Tell()) return GWQ_READ_FAILED;
          got = ReadReport();
          PauseMs(kPausePerReportMs);
      }
    }
    // Contract: what has arrived stays in the file; only a rejected packet removes it.
    return GWQ_READ_FAILED;
  }

 private:
  int ReadReport() {
    report_.fill(0);
    return ICC_ReadDataFromTransPort(report_.data(), static_cast<int>(kReportSize));
  }

  // Bytes beyond the limit are dropped; the read loop then ends the pull.
  void Store(std::span<const std::uint8_t> payload) override {
    stored_ += payload.size();
    if (stored_ > kMaxFileSize) return;
    if (std::fwrite(payload.data(), 1, payload.size(), file_.get()) < payload.size()) NoteFileFailure();
    progress_.Add(payload.size());
  }

  // False when the turn is lost, or the file.
  bool Tell() {
    bool has_turn = true;
    const bool has_file =
        RunWhileClosed(file_, path_, "ab", [this, &has_turn] { has_turn = progress_.Tell(); });
    return has_file && has_turn;
  }

  // Keeps a device, and a file that has replaced the opened one.
  void RemovePartialFile() {
    struct stat opened {};
    struct stat named {};
    if (fstat(fileno(file_.get()), &opened) != 0 || lstat(path_, &named) != 0) return;
    const bool same = opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
    if (same && S_ISREG(named.st_mode)) std::remove(path_);
  }

  // False when a write failed, for example on a full disk.
  bool CloseComplete() {
    const bool written = std::ferror(file_.get()) == 0;
    const bool closed = std::fclose(file_.release()) == 0;
    if (!closed) NoteFileFailure();
    return closed && written;
  }

  void Acknowledge(bool accepted) override {
    Command<kReportSize> response(Channel::kDevice, "RESPONSE");
    response.Fields('|', accepted ? "0" : "1");
    WriteOnLink(reinterpret_cast<unsigned char*>(response.data()), static_cast<int>(kReportSize));
  }

  const char* path_;
  Progress& progress_;
  File file_;
  std::size_t stored_ = 0;
  std::array<unsigned char, 2 * kReportSize> report_{};  // a read may append up to one more report
};

int PullWithCommand(const CommandBytes& command, const char* path, int timeout_ms) {
  Progress progress(GWQ_TRANSFER_PULL, path, 0);
  FileReceiver receiver(path, progress);
  return progress.End(RunExchange(kPull, {.port = 0, .baud = 0}, command, {nullptr, timeout_ms}, &receiver));
}

}  // namespace

int PullTo(std::string_view remote, const char* path) {
  Command<256> command(Channel::kDevice, "PULLFILE");
  command.Fields('|', remote);
  return PullWithCommand({command.data(), command.size()}, path, kTimeoutMs);
}

int TransProcHW(int commandLen, char* command, int timeout_ms, char* path) {
  return PullWithCommand({command, commandLen}, path, timeout_ms);
}

int PullFile(int /*port*/, char /*channel*/, int /*baud*/, int timeout_ms, int commandLen, char* command,
             char* path) {
  return PullWithCommand({command, commandLen}, path, timeout_ms);
}

}  // namespace gwq
