// SPDX-License-Identifier: MIT
#include <gwq/files/host_files.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>

#include <gwq/codec/encodings.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "codec/internal/split_form.h"
#include "files/internal/file.h"
#include "files/internal/path_list.h"

namespace gwq {
namespace {

// Contract: without `mark` in the path nothing is written; the caller's buffer stays as it was.
void CopyAfterLast(const char* path, char mark, char* out) {
  const char* name = AfterLast(path, mark);
  if (name != nullptr && out != nullptr) std::memmove(out, name, std::strlen(name) + 1);
}

void CopyExtension(const char* path, char* out) {
  if (out == nullptr) return;
  const char* extension = AfterLast(path, '.');
  if (extension == nullptr) extension = "";
  std::memmove(out, extension, std::strlen(extension) + 1);
}

// Reads no more than the buffer's size, even if the file has grown since its size was read.
int ReadAtMost(std::span<unsigned char> buffer, const char* path, const char* mode) {
  const File file = OpenFile(path, mode);
  return file ? static_cast<int>(std::fread(buffer.data(), 1, buffer.size(), file.get())) : 0;
}

bool WriteWholeFile(const char* path, std::span<const unsigned char> bytes) {
  File file = OpenFile(path, "wb");
  if (!file) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
  return std::fclose(file.release()) == 0 && written;
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

using namespace gwq;

void GetFileName(const char* path, char* out) {
  CopyAfterLast(path, '/', out);
}

void GetFileNameEx(const char* path, char* out) {
  CopyAfterLast(path, '\\', out);
}

void GetFileExtendName(const char* path, char* out) {
  CopyExtension(path, out);
}

void GetFileExtenName(const char* path, char* out) {
  CopyExtension(path, out);
}

int get_file_size(const char* path) {
  return FileSize(path);
}

int WriteFileData(const char* path, const unsigned char* data, int count) {
  if (data == nullptr && count > 0) return 0;
  return WriteWholeFile(path, BytesOf(data, count)) ? 1 : 0;
}

int ReadFileData(unsigned char* buffer, const char* path, const char* mode) {
  const int size = FileSize(path);
  if (buffer == nullptr || size < 1) return 0;
  return ReadAtMost({buffer, static_cast<std::size_t>(size)}, path, mode);
}

int GetBase46FromFile(const char* path, char* out, int* len) {
  const int size = FileSize(path);
  if (size < 0) return GWQ_NO_FILE;
  if (len == nullptr) return GWQ_FILE_BAD_ARGUMENT;
  const std::int64_t need = SizeAsBase64(size);
  if (need > INT_MAX) return NoMemory();  // the length argument is an int
  if (out == nullptr || need > *len) {
    ICC_DPrintLogToFile("GetBase46FromFile szBase == NULL");
    *len = static_cast<int>(need);
    return GWQ_FILE_BAD_ARGUMENT;
  }
  SecretHeap<unsigned char> data(static_cast<std::size_t>(size));
  if (!data) return NoMemory();
  const int count = ReadAtMost({data.data(), data.size()}, path, "rb");
  if (count == 0) return GWQ_FILE_BAD_ARGUMENT;
  std::memset(out, 0, static_cast<std::size_t>(*len));
  const int length = EncryptBase64(data.data(), count, out, *len);
  if (length > 0) *len = length;
  ICC_DPrintLogToFile("GetBase46FromFile nBaseLen=%d \r\n", length);
  return length > 0 ? GWQ_OK : length;
}

int WriteBase64ToFile(const char* path, const char* text, int len) {
  if (path == nullptr || text == nullptr || len < 0) return GWQ_FILE_BAD_ARGUMENT;
  SecretHeap<unsigned char> data(static_cast<std::size_t>(len) / 4 * 3);
  if (!data) return GWQ_TOO_SMALL;
  const int count = DecryptBase64(text, len, data.data(), static_cast<int>(data.size()));
  if (count <= 0) return count;
  // Contract: the call succeeds once the text is decoded, even if the file cannot be written.
  WriteWholeFile(path, BytesOf(data.data(), count));
  return GWQ_OK;
}
