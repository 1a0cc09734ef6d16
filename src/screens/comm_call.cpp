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
#include <gwq/pinpad/settings.h>
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

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

struct Request {
  int baud;
  int timeout;  // told by the caller, and not used
};

// Text beyond an int's range gives its nearest value, as cJSON does with numbers.
int DecimalIn(const char* text) {
  return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

int NumberAt(const cJSON* request, const char* key) {
  const cJSON* item = cJSON_GetObjectItem(request, key);
  if (item == nullptr) return 0;
  if (cJSON_IsNumber(item) != 0) return item->valueint;
  return item->valuestring == nullptr ? 0 : DecimalIn(item->valuestring);
}

Request ReadRequest(const char* text) {
  const Json request(cJSON_Parse(text));
  return {NumberAt(request.get(), "RequestBaudRate"), NumberAt(request.get(), "RequestTimeOut")};
}

// ------------------------------------------------------------------ the questions

// The message of the last step that had one stays, and is collected again after each later step.
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

// 17 KB, which the stack of a small thread does not have. Null when there was no memory.
struct FreeDescription {
  void operator()(Description* terminal) const {
    std::destroy_at(terminal);
    std::free(terminal);
  }
};
using DescriptionMemory = std::unique_ptr<Description, FreeDescription>;

DescriptionMemory MakeDescription() {
  void* memory = std::calloc(sizeof(Description), 1);
  return DescriptionMemory(memory == nullptr ? nullptr : new (memory) Description);
}

struct Query {
  std::string_view word;
  int number;
  std::string_view item;  // in messages
};

constexpr Query kUnusedItem{"GETGLOBALCONFIG", 6, "ProductionDate"};
constexpr Query kProductionDate{"GETGLOBALCONFIG", 7, "ProductionDate"};
constexpr Query kModel{"GETGLOBALCONFIG", 8, "DeviceModel"};
constexpr Query kVersion{"GETVERSION", 5, "DeviceVersion"};

using Answer = AnswerText<4096>;
using TakePart = std::string_view(std::string_view answer);

std::string_view TakeNothing(std::string_view /*answer*/) {
  return "";
}

// What stands between the first byte and the first "|"; empty without one.
std::string_view TakeVersion(std::string_view answer) {
  const std::size_t bar = answer.find('|');
  return bar == std::string_view::npos || bar == 0 ? std::string_view("") : answer.substr(1, bar - 1);
}

int Run(int baud, const Query& query, TakePart* take, ItemText& text, Messages& messages) {
  constexpr int kTimeoutMs = 2000;
  Command<64> command(Channel::kDevice, query.word);
  Answer answer;
  const int result = Ask({0, baud}, command.Fields('|', query.number), answer, &EndOfRead2, kTimeoutMs);
  if (result != GWQ_OK) {
    messages.SetFailure(query.item, result);
  } else if (answer.text() == kRefusalAnswer) {
    messages.SetMissing(query.item);
  } else {
    text << take(answer.text());
  }
  messages.Collect();
  return result;
}

// A number of the usual length is kept even when the call failed.
void ReadSerialNumber(int baud, SerialNumber& number, Messages& messages) {
  constexpr std::size_t kUsualLength = 10;
  const int result = PN_ReadDeviceId(0, "9", baud, number.data());
  ICC_DPrintLogToFile("szDeviceId = %s ", number.data());
  if (result != GWQ_OK && std::strlen(number.data()) != kUsualLength) {
    number.fill('\0');
    messages.SetFailure("szDeviceId", result);
  }
  messages.Collect();
}

int Describe(int baud, Description& terminal) {
  ItemText unused;
  Run(baud, kUnusedItem, &TakeNothing, unused, terminal.messages);
  Run(baud, kProductionDate, &WithoutMarks, terminal.production_date, terminal.messages);
  Run(baud, kModel, &WithoutMarks, terminal.model, terminal.messages);
  ReadSerialNumber(baud, terminal.serial_number, terminal.messages);
  return Run(baud, kVersion, &TakeVersion, terminal.version, terminal.messages);
}

// ------------------------------------------------------------------ the answer

bool Add(const Json& object, const char* key, const char* value) {
  Json item(cJSON_CreateString(value));
  if (!item || cJSON_AddItemToObject(object.get(), key, item.get()) == 0) return false;
  static_cast<void>(item.release());  // the object's now
  return true;
}

// Null when there was no memory.
JsonText Render(Description& terminal) {
  const Json answer(cJSON_CreateObject());
  const bool complete = Add(answer, "ErrorCode", "0") &&
                        Add(answer, "ErrorMessage", terminal.messages.Text()) &&
                        Add(answer, "DeviceBrand", "VOLK") && Add(answer, "DllVersion", dllversion) &&
                        Add(answer, "DeviceVersion", terminal.version.data()) &&
                        Add(answer, "ProductionDate", terminal.production_date.data()) &&
                        Add(answer, "DeviceSN", terminal.serial_number.data()) &&
                        Add(answer, "DeviceModel", terminal.model.data());
  return JsonText(complete ? cJSON_Print(answer.get()) : nullptr);
}

bool CopyOut(const JsonText& text, char* out, int* length) {
  if (text == nullptr || out == nullptr || length == nullptr || *length < 0) return false;
  const std::size_t size = std::strlen(text.get());
  if (static_cast<std::size_t>(*length) <= size) return false;
  std::memcpy(out, text.get(), size + 1);
  *length = static_cast<int>(size);
  return true;
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int DEV_CommCall(const char* inJson, int /*nReserved*/, char* outJson, int* pnOutLen) {
  const Operation operation;
  ICC_DPrintLogToFile("inJson = %s ", inJson);
  const Request request = ReadRequest(inJson);
  const DescriptionMemory terminal = MakeDescription();
  if (!terminal) return GWQ_TOO_SMALL;
  const int result = Describe(request.baud, *terminal);
  return CopyOut(Render(*terminal), outJson, pnOutLen) ? result : GWQ_TOO_SMALL;
}
