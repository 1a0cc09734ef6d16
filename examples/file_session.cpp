// Documents travel to the terminal and the customer's signature comes back.
//
//   file_session FILES OUT [STORAGE]
//
//   FILES    directory with agreement.pdf, welcome.html and offer.png
//   OUT      directory for what the terminal sends
//   STORAGE  the virtual terminal's --storage directory: both sides' hashes are compared
//
// Exit status 0 when every step went as it should.
#include <gwq.h>
#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr int kBaud = 115200;
constexpr int kPictures = 0;
constexpr int kAdd = 2;
constexpr int kDeleteListed = 4;

struct Session {
  fs::path files;
  fs::path out;
  std::optional<fs::path> storage;
};

void Check(int status, const std::string& step) {
  if (status == GWQ_OK) return;
  throw std::runtime_error(step + " failed with status " + std::to_string(status));
}

void Say(const std::string& asked, const std::string& came_back) {
  std::printf("  %-34s %s\n", asked.c_str(), came_back.c_str());
}

std::string Sha256(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  EVP_Digest(content.data(), content.size(), digest.data(), nullptr, EVP_sha256(), nullptr);
  std::array<char, 65> text{};
  HexToAscii(digest.data(), 32, text.data());
  return text.data();
}

void SayTravelled(const Session& session, const fs::path& local, const std::string& place) {
  const std::string here = Sha256(local);
  std::string verdict;
  if (session.storage) {
    if (Sha256(session.storage->string() + place) != here)
      throw std::runtime_error(place + " differs on the terminal");
    verdict = ", the same on both sides";
  }
  Say(place,
      std::to_string(fs::file_size(local)) + " bytes, SHA-256 " + here.substr(0, 16) + "..." + verdict);
}

void PushDocuments(const Session& session) {
  const fs::path paper = session.files / "agreement.pdf";
  const fs::path page = session.files / "welcome.html";
  std::array<char, 4096> places{};
  Check(pushFileToZ11((paper.string() + "|" + page.string()).c_str(), places.data()),
        "pushing the documents");
  Say("pushed", places.data());
  SayTravelled(session, paper, "/tmp/agreement.pdf");
  SayTravelled(session, page, "/tmp/welcome.html");
}

void SayPictures(const char* when) {
  std::array<char, 1024> names{};
  Check(MP_GetFileList("", "", kBaud, "", kPictures, names.data()), "listing the pictures");
  Say(std::string("idle pictures ") + when, names.data());
}

// The lists are cut into pieces by the calls, so each gets its own.
void ChangePictures(const Session& session) {
  const fs::path picture = session.files / "offer.png";
  const fs::path second = session.out / "offer-2.png";
  fs::copy_file(picture, second, fs::copy_options::overwrite_existing);
  std::string list = picture.string() + "|" + second.string();
  Check(MP_DownloadFile("", "", kBaud, "", kPictures, list.data(), kAdd), "adding the pictures");
  SayTravelled(session, picture, "/mnt/internal_sd/media/picture/offer.png");
  SayPictures("after adding two");
  std::string gone = "offer-2.png";
  Check(MP_DownloadFile("", "", kBaud, "", kPictures, gone.data(), kDeleteListed), "deleting a picture");
  SayPictures("after deleting one");
  fs::remove(second);
}

void PullFrom(const Session& session, const std::string& place, const std::string& name) {
  std::string command = "\x1B[0PULLFILE\x02" + place + "\x03";
  std::string path = (session.out / name).string();
  Check(PullFile(0, '9', kBaud, 3000, static_cast<int>(command.size()), command.data(), path.data()),
        "pulling " + place);
  SayTravelled(session, path, place);
}

void Run(const Session& session) {
  std::printf("Files to and from the terminal\n");
  PushDocuments(session);
  ChangePictures(session);
  PullFrom(session, "/tmp/hw.png", "signature.png");
  PullFrom(session, "/tmp/hw.txt", "signature-strokes.txt");
  std::printf("Session complete.\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: file_session FILES OUT [STORAGE]\n");
    return 2;
  }
  try {
    Run({argv[1], argv[2], argc > 3 ? std::optional<fs::path>(argv[3]) : std::nullopt});
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "file_session: %s\n", error.what());
    return 1;
  }
}
