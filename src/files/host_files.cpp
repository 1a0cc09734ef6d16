#include <gwq/files/host_files.h>

#include <sys/stat.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "codec/internal/split_form.h"
#include "files/internal/file.h"

namespace gwq {
namespace {

// The part behind the last `mark`; null when there is none.
const char* Behind(const char* path, char mark) {
  const char* found = path == nullptr ? nullptr : std::strrchr(path, mark);
  return found == nullptr ? nullptr : found + 1;
}

void CopyBehind(const char* path, char mark, char* out) {
  const char* name = out == nullptr ? nullptr : Behind(path, mark);
  if (name != nullptr) std::memmove(out, name, std::strlen(name) + 1);
}

// At most as many bytes as `buffer` holds, even if the file has grown since its size was asked for.
int ReadAtMost(std::span<unsigned char> buffer, const char* path, const char* mode) {
  const File file = OpenFile(path, mode);
  return file ? static_cast<int>(std::fread(buffer.data(), 1, buffer.size(), file.get())) : 0;
}

std::int64_t SizeAsBase64(std::int64_t size) {
  return (size + 2) / 3 * 4;
}

int NoMemory() {
  ICC_DPrintLogToFile("GetBase46FromFile NULL == pData");
  return GWQ_TOO_SMALL;
}

}  // namespace
}  // namespace gwq

void GetFileName(const char* path, char* out) {
  gwq::CopyBehind(path, '/', out);
}

void GetFileNameEx(const char* path, char* out) {
  gwq::CopyBehind(path, '\\', out);
}

void GetFileExtendName(const char* path, char* out) {
  if (out == nullptr) return;
  const char* extension = gwq::Behind(path, '.');
  if (extension == nullptr) extension = "";
  std::memmove(out, extension, std::strlen(extension) + 1);
}

void GetFileExtenName(const char* path, char* out) {
  GetFileExtendName(path, out);
}

int get_file_size(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) return -1;
  return status.st_size > INT_MAX ? INT_MAX : static_cast<int>(status.st_size);
}

int WriteFileData(const char* path, const unsigned char* data, int count) {
  if (data == nullptr && count > 0) return 0;
  gwq::File file = gwq::OpenFile(path, "wb");
  if (!file) return 0;
  const auto bytes = gwq::BytesOf(data, count);
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  return std::fclose(file.release()) == 0 && written ? 1 : 0;
}

int ReadFileData(unsigned char* buffer, const char* path, const char* mode) {
  const int size = get_file_size(path);
  if (buffer == nullptr || size < 1) return 0;
  return gwq::ReadAtMost({buffer, static_cast<std::size_t>(size)}, path, mode);
}

int GetBase46FromFile(const char* path, char* out, int* len) {
  const int size = get_file_size(path);
  if (size < 0) return GWQ_NO_FILE;
  if (len == nullptr) return GWQ_FILE_BAD_ARGUMENT;
  const std::int64_t need = gwq::SizeAsBase64(size);
  if (need > INT_MAX) return gwq::NoMemory();  // more than the interface can count
  if (out == nullptr || need > *len) {
    ICC_DPrintLogToFile("GetBase46FromFile szBase == NULL");
    *len = static_cast<int>(need);
    return GWQ_FILE_BAD_ARGUMENT;
  }
  gwq::SecretHeap<unsigned char> data(static_cast<std::size_t>(size));
  if (!data) return gwq::NoMemory();
  const int count = gwq::ReadAtMost({data.data(), data.size()}, path, "rb");
  if (count == 0) return GWQ_FILE_BAD_ARGUMENT;
  std::memset(out, 0, static_cast<std::size_t>(*len));
  const int length = EncryptBase64(data.data(), count, out, *len);
  if (length > 0) *len = length;
  ICC_DPrintLogToFile("GetBase46FromFile nBaseLen=%d \r\n", length);
  return length > 0 ? GWQ_OK : length;
}

int WriteBase64ToFile(const char* path, const char* text, int len) {
  if (path == nullptr || text == nullptr || len < 0) return GWQ_FILE_BAD_ARGUMENT;
  gwq::SecretHeap<unsigned char> data(static_cast<std::size_t>(len) / 4 * 3);
  if (!data) return GWQ_TOO_SMALL;
  const int count = DecryptBase64(text, len, data.data(), static_cast<int>(data.size()));
  if (count <= 0) return count;
  WriteFileData(path, data.data(), count);
  return GWQ_OK;
}
