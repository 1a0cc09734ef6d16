/* What a status means and what to do about it, in English and Chinese (UTF-8).
 *
 * The functions are part of the program that includes them, not of the library. Their texts are constant and never
 * NULL, whatever the status; any thread may call them. What a status means for one function in particular stands at
 * its declaration.
 *
 * Common arguments
 *   status    what a function of the library returned
 *   language  enum GwqLanguage; anything but GWQ_CHINESE is English
 */
#ifndef GWQ_STATUS_H
#define GWQ_STATUS_H

#include <stddef.h>

#include "frame/port.h"

/* The languages of the texts. */
enum GwqLanguage {
  GWQ_ENGLISH = 0, /* English */
  GWQ_CHINESE = 1  /* Chinese, in UTF-8 */
};

/* What is known of a status. */
struct GwqStatusText {
  int status;            /* the value */
  const char* name;      /* the constant's name */
  const char* cause[2];  /* by enum GwqLanguage */
  const char* remedy[2]; /* by enum GwqLanguage */
};

/* Finds all that is known of a status. A positive value, which is a count, a choice or the PIN pad's own status word, has the
 * name "GWQ_VALUE", and a negative one that no function returns "GWQ_UNKNOWN"; `status` is 0 in these two.
 * Returns the row; never NULL. */
static inline const struct GwqStatusText* GwqFindStatus(int status) {
  static const struct GwqStatusText texts[] = {
      {GWQ_OK, "GWQ_OK", {"Done.", "成功。"}, {"Nothing to do.", "无需处理。"}},
      {GWQ_BAD_ARGUMENT,
       "GWQ_BAD_ARGUMENT",
       {"An argument is out of range, or a file or device setting could not be used; or the PIN pad refused.",
        "参数超出范围，文件或设备参数无法使用；或密码键盘拒绝了请求。"},
       {"Check the arguments against the function's declaration; check that the files can be read and "
        "written.",
        "请对照函数声明检查参数，并检查文件是否可读写。"}},
      {GWQ_NO_ANSWER,
       "GWQ_NO_ANSWER",
       {"The terminal answered nothing, or the link is not open, or the terminal refused.",
        "终端没有应答，链路未打开，或终端拒绝了请求。"},
       {"Check cable and power of the terminal and try again.", "请检查终端的连接线和电源，然后重试。"}},
      {GWQ_NOT_OPENED,
       "GWQ_NOT_OPENED",
       {"The terminal was not found, or this user may not open its device.",
        "未找到终端，或当前用户无权打开该设备。"},
       {"Plug the terminal in; check the port number and the user's rights to the device.",
        "请接好终端，检查端口号以及用户对设备的访问权限。"}},
      {GWQ_LINK_TIMEOUT,
       "GWQ_LINK_TIMEOUT",
       {"The answer did not come whole within the time-out.", "在超时时间内没有收到完整应答。"},
       {"Allow more time; check the cable and, on a serial port, the baud rate.",
        "请延长超时时间，检查连接线；使用串口时请检查波特率。"}},
      {GWQ_LINK_WRITE,
       "GWQ_LINK_WRITE",
       {"Not all bytes could be written to the link.", "数据未能全部写入链路。"},
       {"Check the cable, plug the terminal in again and repeat the call.",
        "请检查连接线，重新插接终端后再次调用。"}},
      {GWQ_LINK_READ,
       "GWQ_LINK_READ",
       {"Reading from the link failed.", "读取链路失败。"},
       {"Check that the device is still there and that no other program uses it.",
        "请检查设备是否仍然存在，且没有被其他程序占用。"}},
      {GWQ_LINK_NO_DEVICE,
       "GWQ_LINK_NO_DEVICE",
       {"There is no such USB device, or no link is open.", "没有该 USB 设备，或链路未打开。"},
       {"Plug the terminal in, or open the link first.", "请接好终端，或先打开链路。"}},
      {GWQ_BAD_FRAME,
       "GWQ_BAD_FRAME",
       {"The PIN pad's answer is damaged.", "密码键盘的应答数据已损坏。"},
       {"Repeat the call; if it happens again, check the cable.", "请再次调用；如仍出现，请检查连接线。"}},
      {GWQ_EVALUATION_READ,
       "GWQ_EVALUATION_READ",
       {"The answer of the evaluation screen could not be read.", "无法读取评价界面的应答。"},
       {"The customer may not have chosen in time; ask again.", "客户可能未及时评价，请重新发起。"}},
      {GWQ_SEND_FAILED,
       "GWQ_SEND_FAILED",
       {"The command could not be sent whole, or was cancelled while it was sent.",
        "命令未能完整发送，或在发送过程中被取消。"},
       {"Check cable and power of the terminal and repeat the call.",
        "请检查终端的连接线和电源，然后再次调用。"}},
      {GWQ_READ_FAILED,
       "GWQ_READ_FAILED",
       {"No whole answer could be read: the time was over, the link failed, or a serial read was cancelled.",
        "未能读到完整应答：超时、链路故障，或串口读取被取消。"},
       {"If the customer had to act, ask again; otherwise check cable and baud rate.",
        "如需客户操作，请重新发起；否则请检查连接线和波特率。"}},
      {GWQ_NO_LOCAL_FILE,
       "GWQ_NO_LOCAL_FILE",
       {"The local file cannot be opened or read.", "无法打开或读取本地文件。"},
       {"Check the path and the right to read the file.", "请检查路径以及文件的读取权限。"}},
      {GWQ_REFUSED,
       "GWQ_REFUSED",
       {"The terminal refused the command or failed, or answered otherwise than expected.",
        "终端拒绝或执行失败，或应答与预期不符。"},
       {"Check the values sent and that the terminal's software knows the command.",
        "请检查所发送的数据，并确认终端软件支持该命令。"}},
      {GWQ_NO_FILE,
       "GWQ_NO_FILE",
       {"A file is missing.", "文件不存在。"},
       {"Check the paths that were given.", "请检查给出的文件路径。"}},
      {GWQ_PIN_REFUSAL_1,
       "GWQ_PIN_REFUSAL_1",
       {"The PIN pad ended the PIN entry with its refusal 1.", "密码键盘以拒绝码 1 结束了密码输入。"},
       {"Ask for the PIN again.", "请重新输入密码。"}},
      {GWQ_BAD_ACCOUNT,
       "GWQ_BAD_ACCOUNT",
       {"The account number is missing or holds other characters than digits.",
        "账号为空，或含有非数字字符。"},
       {"Pass the account number as digits only.", "请传入仅由数字组成的账号。"}},
      {GWQ_PIN_REFUSAL_3,
       "GWQ_PIN_REFUSAL_3",
       {"The PIN pad ended the PIN entry with its refusal 3.", "密码键盘以拒绝码 3 结束了密码输入。"},
       {"Check the PIN pad's keys, then ask for the PIN again.", "请检查密码键盘的密钥，然后重新输入密码。"}},
      {GWQ_CANCELLED,
       "GWQ_CANCELLED",
       {"The customer or the program cancelled.", "客户或程序已取消。"},
       {"Begin again when it is wanted.", "如有需要，请重新发起。"}},
      {GWQ_TOO_SMALL,
       "GWQ_TOO_SMALL",
       {"A buffer of the caller is too small, or there is no memory left.", "调用方缓冲区太小，或内存不足。"},
       {"Pass a buffer of the size that the declaration names.", "请按函数声明的大小提供缓冲区。"}},
      {GWQ_LINK_CANCELLED,
       "GWQ_LINK_CANCELLED",
       {"The read on the USB link was cancelled.", "USB 链路的读取已被取消。"},
       {"Nothing, if the cancel was wanted.", "如为主动取消，则无需处理。"}},
      {GWQ_NO_VERSION_ANSWER,
       "GWQ_NO_VERSION_ANSWER",
       {"The terminal did not tell its version within a second.", "终端未在一秒内返回版本信息。"},
       {"Check the connection and that the terminal has started, then ask again.",
        "请检查连接并确认终端已启动，然后重新查询。"}},
      {GWQ_NO_ENCRYPTION_KEY,
       "GWQ_NO_ENCRYPTION_KEY",
       {"The terminal holds no key to encipher with.", "终端内没有可用的加密密钥。"},
       {"Load the key into the terminal first.", "请先向终端下载密钥。"}},
  };
  static const struct GwqStatusText value = {
      0,
      "GWQ_VALUE",
      {"Not a failure: a count, a choice, or the PIN pad's own status word.",
       "不是错误：为计数、选择结果或密码键盘自身的状态字。"},
      {"See the function's declaration.", "请参阅函数声明。"}};
  static const struct GwqStatusText unknown = {
      0,
      "GWQ_UNKNOWN",
      {"A status that this header does not know.", "本头文件未定义的状态码。"},
      {"See the function's declaration; header and library may be of different versions.",
       "请参阅函数声明；头文件与库的版本可能不一致。"}};
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    if (texts[i].status == status) return &texts[i];
  }
  return status > 0 ? &value : &unknown;
}

/* Returns the constant's name, such as "GWQ_NO_ANSWER". */
static inline const char* GwqStatusName(int status) {
  return GwqFindStatus(status)->name;
}

/* Returns why it came to this status, in a sentence. */
static inline const char* GwqStatusCause(int status, int language) {
  return GwqFindStatus(status)->cause[language == GWQ_CHINESE];
}

/* Returns what to do about it, in a sentence. */
static inline const char* GwqStatusRemedy(int status, int language) {
  return GwqFindStatus(status)->remedy[language == GWQ_CHINESE];
}

#endif
