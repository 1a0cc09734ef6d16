// SPDX-License-Identifier: MIT
// What a host is told of its transfers, and what its callback may do.
#include <csetjmp>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <thread>

#include <gwq/extra.h>
#include <gwq/files/media.h>
#include <gwq/files/media_functions.h>
#include <gwq/files/pull.h>
#include <gwq/files/push.h>
#include <gwq/frame/transaction.h>
#include <gwq/status_codes.h>
#include "support/monotonic_clock.h"
#include "unit/files/files_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Told {
  int transfer;
  std::string file;
  long long done;
  long long total;

  bool operator==(const Told&) const = default;
};

void PrintTo(const Told& told, std::ostream* out) {
  *out << "{" << told.transfer << ", " << told.file << ", " << told.done << " of " << told.total << "}";
}

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

class TransferProgress : public FilesRig {
 protected:
  TransferProgress() {
    GWQ_SetProgress(&Listen, this);
    usb_.OnTransfer([this](const Transfer& transfer) {
      if (transfer.in) AdvanceMs(ms_per_answer_);
      if (transfer.in && on_answer_) on_answer_(transfer.index);
    });
  }
  ~TransferProgress() override { GWQ_SetProgress(nullptr, nullptr); }
  TransferProgress(const TransferProgress&) = delete;
  TransferProgress& operator=(const TransferProgress&) = delete;

  static void Listen(int transfer, const char* file, long long done, long long total, void* user) {
    auto& test = *static_cast<TransferProgress*>(user);
    test.told_.push_back({transfer, file, done, total});
    test.told_ms_.push_back(MonotonicNowMs() - kStart * 1000);
    if (test.told_.size() == test.act_at_) test.act_();
  }

  // Acts in the n-th call, from 1.
  void At(std::size_t call, std::function<void()> act) {
    act_at_ = call;
    act_ = std::move(act);
  }

  static int Push(const std::string& path) {
    return Z11DownLoadFile(0, '9', 9600, 255, path.c_str(), "/tmp/there");
  }
  void ExpectOpening() {
    Exchange(wire::kModeChange);
    Exchange(wire::kPushStart);
  }
  void ExpectPiece(std::string_view content) { Exchange(wire::TransferPacket(2, BytesOf(content))); }
  void ExpectPieces(std::string_view content, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) ExpectPiece(content.substr(i * kPieceSize, kPieceSize));
  }

  int Pull() {
    std::string command(wire::kPullRequest);
    return TransProcHW(static_cast<int>(command.size()), command.data(), 3000, pulled_.data());
  }
  void Reports(const Bytes& packet) {
    for (const Bytes& report : CutIntoReports(packet)) usb_.Answer(report);
    usb_.ExpectCommand(wire::kAccepted);
  }

  std::vector<Told> told_;
  std::vector<std::int64_t> told_ms_;
  std::size_t act_at_ = 0;
  std::function<void()> act_;
  std::int64_t ms_per_answer_ = 0;
  std::function<void(int)> on_answer_;
  std::string pulled_ = Path("pulled");
};

[[noreturn]] void Throw() {
  throw std::runtime_error("from the host");
}

// ------------------------------------------------------------------ push

TEST_F(TransferProgress, APushTellsOfItsStartAndOfItsEnd) {
  const std::string file = MakeFile("a.pdf");
  ExpectPush(255, "/tmp/there");
  EXPECT_EQ(Push(file), 0);
  EXPECT_THAT(told_, ElementsAre(Told{GWQ_TRANSFER_PUSH, file, 0, 7}, Told{GWQ_TRANSFER_PUSH, file, 7, 7}));
}

TEST_F(TransferProgress, BetweenTheseItIsToldAtMostEveryTenthOfASecond) {
  const std::string content = FileContent(5 * kPieceSize + 10);
  const std::string file = MakeFile("a.pdf", content);
  ExpectPush(255, "/tmp/there", content);
  ms_per_answer_ = 45;
  EXPECT_EQ(Push(file), 0);
  constexpr long long kPiece = kPieceSize;
  constexpr long long kAll = 5 * kPiece + 10;
  EXPECT_THAT(told_,
              ElementsAre(Told{GWQ_TRANSFER_PUSH, file, 0, kAll}, Told{GWQ_TRANSFER_PUSH, file, kPiece, kAll},
                          Told{GWQ_TRANSFER_PUSH, file, 4 * kPiece, kAll},
                          Told{GWQ_TRANSFER_PUSH, file, kAll, kAll}));
  EXPECT_THAT(told_ms_, ElementsAre(0, 3 * 45, 6 * 45, 9 * 45));
}

TEST_F(TransferProgress, AFileOfWholePiecesStillEndsWithTheEmptyOne) {
  const std::string content = FileContent(2 * kPieceSize);
  const std::string file = MakeFile("a.pdf", content);
  ExpectPush(255, "/tmp/there", content);
  ms_per_answer_ = 200;
  EXPECT_EQ(Push(file), 0);
  EXPECT_EQ(told_.size(), 4U);
  EXPECT_EQ(told_.back(), (Told{GWQ_TRANSFER_PUSH, file, 400'000, 400'000}));
}

TEST_F(TransferProgress, MediaAndFirmwareAreNamedSo) {
  const std::string photo = MakeFile("t.jpg");
  const std::string image = MakeFile("update.dat");
  EXPECT_EQ(GWQ_SetDrainMs(1), 0);
  ExpectPush(2, "t.jpg");
  EXPECT_EQ(MP_DownHeadFile(nullptr, nullptr, 9600, photo.c_str(), nullptr), 0);
  ExpectPush(4, "update.dat");
  usb_.ExpectCommand("\x1B[0UPDATE\x02/mnt/sdcard/media/data/update.dat\x03");
  std::string path = image;
  EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, 9600, nullptr, 1, path.data(), 0), 0);
  GWQ_SetDrainMs(0);
  EXPECT_THAT(
      told_, ElementsAre(Told{GWQ_TRANSFER_MEDIA, photo, 0, 7}, Told{GWQ_TRANSFER_MEDIA, photo, 7, 7},
                         Told{GWQ_TRANSFER_FIRMWARE, image, 0, 7}, Told{GWQ_TRANSFER_FIRMWARE, image, 7, 7}));
}

TEST_F(TransferProgress, AFailureTellsOfTheEndToo) {
  const std::string content = FileContent(kPieceSize + 1);
  const std::string file = MakeFile("a.pdf", content);
  ExpectOpening();
  ExpectPieces(content, 1);
  Exchange(wire::TransferPacket(2, BytesOf(content.substr(kPieceSize))), "\x02U\x03");
  EXPECT_EQ(Push(file), -14);
  EXPECT_EQ(told_.back(), (Told{GWQ_TRANSFER_PUSH, file, 200'000, 200'001}));
}

TEST_F(TransferProgress, AFileThatIsNotThereHasNoSize) {
  ExpectOpening();
  const std::string none = Path("none");
  EXPECT_EQ(Push(none), -1);
  EXPECT_THAT(told_, ElementsAre(Told{GWQ_TRANSFER_PUSH, none, 0, 0}, Told{GWQ_TRANSFER_PUSH, none, 0, 0}));
}

TEST_F(TransferProgress, WithoutACallbackNothingIsTold) {
  GWQ_SetProgress(nullptr, this);
  ExpectPush(255, "/tmp/there");
  EXPECT_EQ(Push(MakeFile("a.pdf")), 0);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(TransferProgress, AnotherThreadsTransfersAreNotToldHere) {
  ExpectPush(255, "/tmp/there");
  std::thread([this] { EXPECT_EQ(Push(MakeFile("a.pdf")), 0); }).join();
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(TransferProgress, ACallbackMayTakeItselfAway) {
  ExpectPush(255, "/tmp/there");
  At(1, [] { GWQ_SetProgress(nullptr, nullptr); });
  EXPECT_EQ(Push(MakeFile("a.pdf")), 0);
  EXPECT_EQ(told_.size(), 1U);
}

// ------------------------------------------------------------------ cancelling

TEST_F(TransferProgress, ACancelAtTheStartSendsNothing) {
  At(1, &CancelWrite);
  EXPECT_EQ(Push(MakeFile("a.pdf")), GWQ_CANCELLED);
  EXPECT_EQ(usb_.Count("out"), 0);
  EXPECT_EQ(told_.size(), 2U);
}

TEST_F(TransferProgress, ACancelEndsAPushBeforeItsNextPacket) {
  const std::string content = FileContent(4 * kPieceSize + 1);
  ExpectOpening();
  ExpectPieces(content, 1);
  ms_per_answer_ = 50;
  At(2, &CancelWrite);
  EXPECT_EQ(Push(MakeFile("a.pdf", content)), GWQ_CANCELLED);
  EXPECT_EQ(told_.back().done, 200'000);
}

TEST_F(TransferProgress, ACancelByAnotherThreadDoesTheSame) {
  const std::string content = FileContent(4 * kPieceSize + 1);
  ExpectOpening();
  ExpectPieces(content, 2);
  on_answer_ = [](int index) {
    if (index == 3) std::thread(&CancelWrite).join();
  };
  EXPECT_EQ(Push(MakeFile("a.pdf", content)), GWQ_CANCELLED);
  EXPECT_THAT(told_, testing::SizeIs(2));
}

TEST_F(TransferProgress, ACancelBehindTheLastPieceKeepsTheFileFromBeingStored) {
  ExpectOpening();
  ExpectPiece("content");
  on_answer_ = [](int index) {
    if (index == 2) CancelWrite();
  };
  EXPECT_EQ(Push(MakeFile("a.pdf")), GWQ_CANCELLED);
}

TEST_F(TransferProgress, ACancelOfAnEarlierCallIsForgotten) {
  CancelWrite();
  ExpectPush(255, "/tmp/there");
  EXPECT_EQ(Push(MakeFile("a.pdf")), 0);
}

TEST_F(TransferProgress, ACancelBetweenTwoFilesOfAListEndsTheCall) {
  const std::string list = MakeFile("a.pdf") + "|" + MakeFile("b.pdf");
  ExpectPush(255, "/tmp/a.pdf");
  At(2, &CancelWrite);
  char out[4096] = {};
  EXPECT_EQ(pushFileToZ11(list.c_str(), out), GWQ_CANCELLED);
  EXPECT_EQ(told_.size(), 2U);
}

TEST_F(TransferProgress, WithoutACallbackCancelWriteDoesNotEndAPush) {
  GWQ_SetProgress(nullptr, nullptr);
  const std::string content = FileContent(kPieceSize + 1);
  ExpectPush(255, "/tmp/there", content);
  on_answer_ = [](int) { CancelWrite(); };
  EXPECT_EQ(Push(MakeFile("a.pdf", content)), 0);
}

// ------------------------------------------------------------------ callbacks that do not return

TEST_F(TransferProgress, AFileThatIsReplacedMeanwhileEndsThePush) {
  const std::string content = FileContent(3 * kPieceSize);
  const std::string file = MakeFile("a.pdf", content);
  ExpectOpening();
  ExpectPieces(content, 1);
  ms_per_answer_ = 50;
  At(2, [&] { std::filesystem::rename(MakeFile("b.pdf", content), file); });
  EXPECT_EQ(Push(file), GWQ_BAD_ARGUMENT);
}

TEST_F(TransferProgress, AThrowOutOfAPushLeavesNothingOpenAndTheNextOneWorks) {
  const std::string content = FileContent(3 * kPieceSize);
  const std::string file = MakeFile("a.pdf", content);
  ExpectOpening();
  ExpectPieces(content, 1);
  ms_per_answer_ = 50;
  At(2, &Throw);
  const std::ptrdiff_t open = OpenDescriptors();
  EXPECT_THROW(Push(file), std::runtime_error);
  EXPECT_EQ(OpenDescriptors(), open);
  EXPECT_EQ(usb_.Count("open"), usb_.Count("close"));

  ExpectPush(255, "/tmp/there", content);
  EXPECT_EQ(Push(file), 0);
}

TEST_F(TransferProgress, AJumpDoesNoMoreHarm) {
  static std::jmp_buf s_out;
  ExpectOpening();
  const std::string content = FileContent(3 * kPieceSize);
  const std::string file = MakeFile("a.pdf", content);
  ExpectPieces(content, 1);
  ms_per_answer_ = 50;
  At(2, [] { std::longjmp(s_out, 1); });  // NOLINT(cert-err52-cpp): hosts in C do so
  const std::ptrdiff_t open = OpenDescriptors();
  if (setjmp(s_out) == 0) {  // NOLINT(cert-err52-cpp)
    Push(file);
    ADD_FAILURE() << "the callback came back";
  }
  EXPECT_EQ(OpenDescriptors(), open);
  ExpectPush(255, "/tmp/there", content);
  EXPECT_EQ(Push(file), 0);
}

// ------------------------------------------------------------------ pull

TEST_F(TransferProgress, APullsSizeIsKnownAtItsEnd) {
  const std::string content = FileContent(3000);
  usb_.ExpectCommand(wire::kPullRequest);
  Reports(wire::TransferPacket(2, BytesOf(content)));
  Reports(wire::TransferPacket(3, {}));
  ms_per_answer_ = 90;
  EXPECT_EQ(Pull(), 0);
  EXPECT_THAT(
      told_,
      ElementsAre(Told{GWQ_TRANSFER_PULL, pulled_, 0, 0}, Told{GWQ_TRANSFER_PULL, pulled_, 2042, 0},
                  Told{GWQ_TRANSFER_PULL, pulled_, 3000, 0}, Told{GWQ_TRANSFER_PULL, pulled_, 3000, 3000}));
  EXPECT_EQ(ReadFile(pulled_), content);
}

TEST_F(TransferProgress, AFailedPullTellsHowFarItCame) {
  usb_.ExpectCommand(wire::kPullRequest);
  Reports(wire::TransferPacket(2, BytesOf("some")));
  EXPECT_EQ(Pull(), -11);
  EXPECT_THAT(told_,
              ElementsAre(Told{GWQ_TRANSFER_PULL, pulled_, 0, 0}, Told{GWQ_TRANSFER_PULL, pulled_, 4, 0}));
}

TEST_F(TransferProgress, ACancelReadEndsAPull) {
  usb_.ExpectCommand(wire::kPullRequest);
  for (const Bytes& report : CutIntoReports(wire::TransferPacket(2, Bytes(2000)))) usb_.Answer(report);
  ms_per_answer_ = 100;
  At(2, [] { CancelRead(); });
  EXPECT_EQ(Pull(), -11);
  EXPECT_EQ(std::filesystem::file_size(pulled_), 1018U) << "what has been stored stays";
}

TEST_F(TransferProgress, AThrowOutOfAPullClosesTheFileAndTheNextExchangeTheLink) {
  usb_.ExpectCommand(wire::kPullRequest);
  usb_.Answer(CutIntoReports(wire::TransferPacket(2, Bytes(2000)))[0]);
  ms_per_answer_ = 100;
  At(2, &Throw);
  const std::ptrdiff_t open = OpenDescriptors();
  EXPECT_THROW(Pull(), std::runtime_error);
  EXPECT_EQ(OpenDescriptors(), open);
  EXPECT_EQ(std::filesystem::file_size(pulled_), 1018U);

  usb_.ExpectCommand(wire::kPullRequest);
  Reports(wire::TransferPacket(3, {}));
  EXPECT_EQ(Pull(), 0);
  EXPECT_EQ(usb_.Count("open"), 2);
  EXPECT_EQ(usb_.Count("close"), 2);
}

TEST_F(TransferProgress, APulledFileThatIsReplacedMeanwhileIsLeftAlone) {
  usb_.ExpectCommand(wire::kPullRequest);
  usb_.Answer(CutIntoReports(wire::TransferPacket(2, Bytes(2000)))[0]);
  ms_per_answer_ = 100;
  At(2, [this] { std::filesystem::rename(MakeFile("other", "other"), pulled_); });
  EXPECT_EQ(Pull(), -11);
  EXPECT_EQ(ReadFile(pulled_), "other");
}

TEST_F(TransferProgress, APullToADeviceTellsOfStartAndEndAlone) {
  pulled_ = "/dev/null";
  usb_.ExpectCommand(wire::kPullRequest);
  Reports(wire::TransferPacket(2, Bytes(3000)));
  Reports(wire::TransferPacket(3, {}));
  ms_per_answer_ = 200;
  EXPECT_EQ(Pull(), 0);
  EXPECT_EQ(told_.size(), 2U);
}

// ------------------------------------------------------------------ HIDDownLoad and DownVideoInfo

class DownloadProgress : public TransferProgress {
 protected:
  static constexpr std::size_t kPiece = 30'300;

  static std::string Cut(std::uint8_t type, std::string_view payload) {
    const Bytes packet = wire::TransferPacket(type, BytesOf(payload));
    return TextOf(Bytes(packet.begin(), std::find(packet.begin(), packet.end(), 0)));
  }
  void ExpectDownload(std::size_t pieces, bool ends = true) {
    Exchange(wire::kModeChange);
    Exchange("\x02\x01");
    for (std::size_t i = 0; i < pieces; ++i)
      Exchange(Cut(2, std::string(std::min(kPiece, 70'000 - i * kPiece), 'z')));
    if (ends) Exchange(Cut(3, "\x01movie.mp4"));
  }

  std::string file_ = MakeFile("movie.mp4", std::string(70'000, 'z'));
};

TEST_F(DownloadProgress, TellsOfEachPieceInItsTime) {
  ExpectDownload(3);
  ms_per_answer_ = 60;
  EXPECT_EQ(HIDDownLoad(file_.c_str(), 1), 0);
  EXPECT_THAT(told_, ElementsAre(Told{GWQ_TRANSFER_MEDIA, file_, 0, 70'000},
                                 Told{GWQ_TRANSFER_MEDIA, file_, 30'300, 70'000},
                                 Told{GWQ_TRANSFER_MEDIA, file_, 70'000, 70'000}));
}

TEST_F(DownloadProgress, ACancelEndsItBeforeTheNextPacketWithTheEndPacketAsEver) {
  ExpectDownload(1);
  ms_per_answer_ = 60;
  At(2, &CancelWrite);
  EXPECT_EQ(HIDDownLoad(file_.c_str(), 1), GWQ_CANCELLED);
  EXPECT_EQ(told_.back(), (Told{GWQ_TRANSFER_MEDIA, file_, 30'300, 70'000}));
}

TEST_F(DownloadProgress, AThrowLeavesNothingOpenAndTheNextOneWorks) {
  ExpectDownload(1, false);
  ms_per_answer_ = 60;
  At(2, &Throw);
  const std::ptrdiff_t open = OpenDescriptors();
  EXPECT_THROW(HIDDownLoad(file_.c_str(), 1), std::runtime_error);
  EXPECT_EQ(OpenDescriptors(), open);
  ExpectDownload(3);
  EXPECT_EQ(HIDDownLoad(file_.c_str(), 1), 0);
}

TEST_F(DownloadProgress, AFileThatCannotBeOpenedTellsTwiceOfNothing) {
  EXPECT_EQ(HIDDownLoad(nullptr, 4), -12);
  EXPECT_THAT(told_,
              ElementsAre(Told{GWQ_TRANSFER_FIRMWARE, "", 0, 0}, Told{GWQ_TRANSFER_FIRMWARE, "", 0, 0}));
}

TEST_F(DownloadProgress, ATextInPiecesTellsUnderItsNameOnTheTerminal) {
  for (int i = 0; i < 3; ++i) usb_.Answer(wire::kDone);
  ms_per_answer_ = 70;
  DownVideoInfo(0, '9', 9600, 3, std::string(2500, 't').c_str(), "n.txt");
  EXPECT_THAT(told_, ElementsAre(Told{GWQ_TRANSFER_MEDIA, "n.txt", 0, 2500},
                                 Told{GWQ_TRANSFER_MEDIA, "n.txt", 2048, 2500},
                                 Told{GWQ_TRANSFER_MEDIA, "n.txt", 2500, 2500}));
}

TEST_F(DownloadProgress, ACancelEndsATextBeforeItsNextPiece) {
  usb_.Answer(wire::kDone);
  ms_per_answer_ = 100;
  At(2, &CancelWrite);
  EXPECT_EQ(DownVideoInfo(0, '9', 9600, 3, std::string(2500, 't').c_str(), "n.txt"), GWQ_CANCELLED);
  EXPECT_EQ(usb_.Count("out"), 1);
}

}  // namespace
}  // namespace gwq::test
