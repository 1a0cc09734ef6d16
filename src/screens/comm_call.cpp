// SPDX-License-Identifier: MIT
#include <gwq/screens/comm_call.h>

#include <cjson/cJSON.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/frame/load.h>
#include <gwq/frame/port.h>
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"
#include "pinpad/internal/device_id.h"
#include "screens/internal/comm_request.h"

namespace gwq {
namespace {

struct DeleteJson {
  void operator()(cJSON* item) const { cJSON_Delete(item); }
};
using Json = std::unique_ptr<cJSON, DeleteJson>;

struct FreeJsonText {
  void operator()(char* text) const { cJSON_free(text); }
};
using JsonText = std::unique_ptr<char, FreeJsonText>;

// ------------------------------------------------------------------ the request

// Text beyond the range of an int becomes its nearest value, as a number does in cJSON.
int ParseDecimal(const char* text) {
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

int NumberOf(const cJSON* request, const char* key) {
  const cJSON* item = cJSON_GetObjectItem(request, key);
  if (item == nullptr) return 0;
  if (cJSON_IsNumber(item) != 0) return item->valueint;
  return item->valuestring == nullptr ? 0 : ParseDecimal(item->valuestring);
}

}  // namespace

CommRequest ParseCommRequest(const char* json) {
  const Json request(cJSON_Parse(json));
  return {NumberOf(request.get(), "RequestBaudRate")};
}

bool IsSerialNumberKept(int status, std::string_view number) {
  constexpr std::size_t kUsualSize = 10;
  return status == GWQ_OK || number.size() == kUsualSize;
}

namespace {

// ------------------------------------------------------------------ the queries

// Contract: the message of the last step that had one is collected again after each later step, so
// that "ErrorMessage" has it several times.
class Messages {
 public:
  void SetFailure(std::string_view item, int status) { last_ = {item, status}; }
  void SetMissing(std::string_view item) { last_ = {item, kMissing}; }

  void Collect() {
    if (last_.item.empty()) return;
    collected_ << last_.item;
    if (last_.status == kMissing) {
      collected_ << " is null ";
    } else {
      collected_ << " get error,nRet = " << last_.status << " ";
    }
  }

  const char* Text() { return collected_.size() < 2 ? "success" : collected_.data(); }

 private:
  static constexpr int kMissing = 1;  // no status
  struct Message {
    std::string_view item;
    int status = GWQ_OK;
  };

  Message last_;
  SecretText<512> collected_;
};

using ItemText = SecretText<4096>;
using SerialNumber = std::array<char, 4096>;

struct Description {
  Messages messages;
  ItemText version;
  ItemText production_date;
  ItemText model;
  SerialNumber serial_number{};
};

// On the heap, because 17 KB do not fit on the stack of a small thread.
struct FreeDescription {
  void operator()(Description* terminal) const {
    std::destroy_at(terminal);
    std::free(terminal);
  }
};
using DescriptionMemory = std::unique_ptr<Description, FreeDescription>;

// Null without memory.
DescriptionMemory AllocateDescription() {
  void* memory = std::calloc(sizeof(Description), 1);
  return DescriptionMemory(memory == nullptr ? nullptr : new (memory) Description);
}

struct Query {
  std::string_view word;
  int number;
  std::string_view item;  // in messages
};

// Contract: asked first, and only a failure of it is visible, in "ErrorMessage".
constexpr Query kUnusedItem{"GETGLOBALCONFIG", 6, "ProductionDate"};
constexpr Query kProductionDate{"GETGLOBALCONFIG", 7, "ProductionDate"};
constexpr Query kModel{"GETGLOBALCONFIG", 8, "DeviceModel"};
constexpr Query kVersion{"GETVERSION", 5, "DeviceVersion"};

using ParseItem = std::string_view(std::string_view answer);

// The text between the first byte and the first "|"; empty without "|".
std::string_view ParseVersion(std::string_view answer) {
  const std::size_t bar = answer.find('|');
  return bar == std::string_view::npos || bar == 0 ? std::string_view("") : answer.substr(1, bar - 1);
}

int AskItem(int baud, const Query& query, ParseItem* parse, ItemText& text, Messages& messages) {
  constexpr int kTimeoutMs = 2000;
  Command<64> command(Channel::kDevice, query.word);
  AnswerText<4096> answer;
  const int result = Ask({0, baud}, command.Fields('|', query.number), answer, &EndOfRead2, kTimeoutMs);
  if (result != GWQ_OK) {
    messages.SetFailure(query.item, result);
  } else if (answer.text() == kRefusalAnswer) {
    messages.SetMissing(query.item);
  } else {
    text << parse(answer.text());
  }
  messages.Collect();
  return result;
}

void ReadSerialNumber(int baud, SerialNumber& number, Messages& messages) {
  const int result = ReadDeviceId(baud, number.data());
  ICC_DPrintLogToFile("szDeviceId = %s ", number.data());
  if (!IsSerialNumberKept(result, number.data())) {
    number.fill('\0');
    messages.SetFailure("szDeviceId", result);
  }
  messages.Collect();
}

// Contract: a step that fails does not end the call, whose status is that of the last step.
int Describe(int baud, Description& terminal) {
  ItemText unused;
  AskItem(baud, kUnusedItem, &WithoutMarks, unused, terminal.messages);
  AskItem(baud, kProductionDate, &WithoutMarks, terminal.production_date, terminal.messages);
  AskItem(baud, kModel, &WithoutMarks, terminal.model, terminal.messages);
  ReadSerialNumber(baud, terminal.serial_number, terminal.messages);
  return AskItem(baud, kVersion, &ParseVersion, terminal.version, terminal.messages);
}

// ------------------------------------------------------------------ the answer

bool AddMember(const Json& object, const char* key, const char* value) {
  Json item(cJSON_CreateString(value));
  if (!item || cJSON_AddItemToObject(object.get(), key, item.get()) == 0) return false;
  static_cast<void>(item.release());  // owned by the object from here on
  return true;
}

// Null without memory.
// Contract: "ErrorCode" is "0" in every answer; the status is what the call returns.
JsonText Render(Description& terminal) {
  const Json answer(cJSON_CreateObject());
  const bool complete =
      AddMember(answer, "ErrorCode", "0") && AddMember(answer, "ErrorMessage", terminal.messages.Text()) &&
      AddMember(answer, "DeviceBrand", "VOLK") && AddMember(answer, "DllVersion", dllversion) &&
      AddMember(answer, "DeviceVersion", terminal.version.data()) &&
      AddMember(answer, "ProductionDate", terminal.production_date.data()) &&
      AddMember(answer, "DeviceSN", terminal.serial_number.data()) &&
      AddMember(answer, "DeviceModel", terminal.model.data());
  return JsonText(complete ? cJSON_Print(answer.get()) : nullptr);
}

bool CopyJsonText(const JsonText& text, char* out, int* length) {
  if (text == nullptr || out == nullptr || length == nullptr || *length < 0) return false;
  const std::size_t size = std::strlen(text.get());
  if (static_cast<std::size_t>(*length) <= size) return false;
  std::memcpy(out, text.get(), size + 1);
  *length = static_cast<int>(size);
  return true;
}

}  // namespace

int DEV_CommCall(const char* inJson, int /*nReserved*/, char* outJson, int* pnOutLen) {
  const Operation operation;
  ICC_DPrintLogToFile("inJson = %s ", inJson);
  const CommRequest request = ParseCommRequest(inJson);
  const DescriptionMemory terminal = AllocateDescription();
  if (!terminal) return GWQ_TOO_SMALL;
  const int result = Describe(request.baud, *terminal);
  // Contract: an output that is too small hides the status.
  return CopyJsonText(Render(*terminal), outJson, pnOutLen) ? result : GWQ_TOO_SMALL;
}

}  // namespace gwq
