// SPDX-License-Identifier: MIT
// Documents travel to the terminal and the customer's signature comes back.
//
//   file_session FILES OUT [STORAGE]
//
//   FILES    directory with agreement.pdf, welcome.html and offer.png
//   OUT      directory for what the terminal sends
//   STORAGE  the virtual terminal's --storage directory: both sides' hashes are compared
//
// Exit status 0 when every step went as it should.
#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "steps.h"

namespace {

namespace fs = std::filesystem;
using example::Check;
using example::Say;

constexpr int kBaud = 115200;
constexpr int kPictures = 0;
constexpr int kAdd = 2;
constexpr int kDeleteListed = 4;

struct Places {
  fs::path files;
  fs::path out;
  std::optional<fs::path> storage;
};

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

void SayTravelled(const Places& places, const fs::path& local, const std::string& place) {
  const std::string here = Sha256(local);
  std::string verdict;
  if (places.storage) {
    if (Sha256(places.storage->string() + place) != here)
      throw std::runtime_error(place + " differs on the terminal");
    verdict = ", the same on both sides";
  }
  Say(place,
      std::to_string(fs::file_size(local)) + " bytes, SHA-256 " + here.substr(0, 16) + "..." + verdict);
}

void PushDocuments(const Places& places) {
  const fs::path paper = places.files / "agreement.pdf";
  const fs::path page = places.files / "welcome.html";
  std::array<char, 4096> stored{};
  Check("pushFileToZ11", pushFileToZ11((paper.string() + "|" + page.string()).c_str(), stored.data()),
        "pushing the documents");
  Say("pushed", stored.data());
  SayTravelled(places, paper, "/tmp/agreement.pdf");
  SayTravelled(places, page, "/tmp/welcome.html");
}

void SayPictures(const char* when) {
  std::array<char, 1024> names{};
  Check("MP_GetFileList", MP_GetFileList("", "", kBaud, "", kPictures, names.data()), "listing the pictures");
  Say(std::string("idle pictures ") + when, names.data());
}

// The lists are cut into pieces by the calls, so each gets its own.
void ChangePictures(const Places& places) {
  const fs::path picture = places.files / "offer.png";
  const fs::path second = places.out / "offer-2.png";
  fs::copy_file(picture, second, fs::copy_options::overwrite_existing);
  std::string list = picture.string() + "|" + second.string();
  Check("MP_DownloadFile", MP_DownloadFile("", "", kBaud, "", kPictures, list.data(), kAdd),
        "adding the pictures");
  SayTravelled(places, picture, "/mnt/internal_sd/media/picture/offer.png");
  SayPictures("after adding two");
  std::string gone = "offer-2.png";
  Check("MP_DownloadFile", MP_DownloadFile("", "", kBaud, "", kPictures, gone.data(), kDeleteListed),
        "deleting a picture");
  SayPictures("after deleting one");
  fs::remove(second);
}

void PullFrom(const Places& places, const std::string& place, const std::string& name) {
  std::string command = "\x1B[0PULLFILE\x02" + place + "\x03";
  std::string path = (places.out / name).string();
  Check("PullFile",
        PullFile(0, '9', kBaud, 3000, static_cast<int>(command.size()), command.data(), path.data()),
        "pulling " + place);
  SayTravelled(places, path, place);
}

void Session(const Places& places) {
  std::printf("Files to and from the terminal\n");
  PushDocuments(places);
  ChangePictures(places);
  PullFrom(places, "/tmp/hw.png", "terminal-signature.png");
  PullFrom(places, "/tmp/hw.txt", "terminal-strokes.txt");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: file_session FILES OUT [STORAGE]\n");
    return 2;
  }
  return example::Run("file_session", [&] {
    Session({fs::absolute(argv[1]), fs::absolute(argv[2]),
             argc > 3 ? std::optional<fs::path>(argv[3]) : std::nullopt});
  });
}
