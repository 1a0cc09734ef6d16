// SPDX-License-Identifier: MIT
// The application's part in the conversations of tests/wire: calls of the library, and what they must give.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "support/guarded_buffer.h"
#include "unit/files/files_rig.h"

namespace gwq::test {

// The host on which the application runs.
class Host : public FilesRig {
 public:
  using FilesRig::MakeFile;
  using FilesRig::Path;
  std::string MakeDocuments() { return MakeFile("a.pdf", "first") + "|" + MakeFile("b.pdf", "second"); }
};

using Call = std::function<void(Host& host)>;
using Calls = std::map<std::string_view, Call>;

Calls CounterCalls();
Calls PadCalls();
Calls FileCalls();
Calls ScreenCalls();

// An output of the library, which must hold exactly this text and its terminator, if it has one.
class Output : public GuardedBuffer {
 public:
  explicit Output(std::size_t size) : GuardedBuffer(size, kFill) {}

  void ExpectText(std::string_view text) const { ExpectBytes(Concat(BytesOf(text), {0})); }
  void ExpectBytes(Bytes bytes) const {
    ASSERT_LE(bytes.size(), size());
    bytes.resize(size(), kFill);
    EXPECT_EQ(Readable(Content()), Readable(bytes));
  }

 private:
  static constexpr std::uint8_t kFill = 0x55;
};

}  // namespace gwq::test
