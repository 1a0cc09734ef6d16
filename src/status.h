/* SPDX-License-Identifier: MIT */
/**
 * @file
 * What a status means and what to do about it, in English and Chinese (UTF-8).
 *
 * The functions are part of the program that includes them, not of the library. Their texts are
 * constant and never NULL, for any status. A status has a cause in general (GwqStatusCause()) and,
 * where that tells more, one for the function that returned it (GwqStatusCauseOf()); all of them
 * are given at the function's declaration.
 *
 * @remark Any thread.
 */
#ifndef GWQ_STATUS_H
#define GWQ_STATUS_H

#include <stddef.h>
#include <string.h>

#include <gwq/status_codes.h>

/** The languages of the texts. */
enum GwqLanguage {
  GWQ_ENGLISH = 0, /**< English */
  GWQ_CHINESE = 1  /**< Chinese, in UTF-8 */
};

/** What is known of a status. */
struct GwqStatusText {
  int status;            /**< the value */
  const char* name;      /**< the constant's name */
  const char* cause[2];  /**< by enum GwqLanguage */
  const char* remedy[2]; /**< by enum GwqLanguage */
};

/** What a status means for some functions in particular. */
struct GwqFunctionText {
  int status;            /**< the value */
  const char* functions; /**< their names, separated by single spaces */
  const char* cause[2];  /**< by enum GwqLanguage */
  const char* remedy[2]; /**< by enum GwqLanguage; empty where the general remedy fits */
};

/**
 * Returns all that is known of a status.
 *
 * A positive value, which is a count, a choice or the PIN pad's own status word, has the name
 * `GWQ_VALUE`, and a negative one that no function returns `GWQ_UNKNOWN`; GwqStatusText::status is
 * 0 in these two.
 *
 * @param status  what a function of the library returned
 * @return the row; never NULL
 * @since 1.0.0
 */
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
       {"The customer's time ran out, or the terminal answered nothing or refused, or the link is not open.",
        "客户操作超时，或终端没有应答或拒绝了请求，或链路未打开。"},
       {"If the customer had to act, ask again; otherwise check cable and power of the terminal and try "
        "again.",
        "如需客户操作，请重新发起；否则请检查终端的连接线和电源，然后重试。"}},
      {GWQ_NOT_OPENED,
       "GWQ_NOT_OPENED",
       {"The terminal was not found, or this user may not open its device, or another program holds it.",
        "未找到终端，或当前用户无权打开该设备，或该设备被其他程序占用。"},
       {"Plug the terminal in; check the port number and the user's rights to the device; end the other "
        "program.",
        "请接好终端，检查端口号以及用户对设备的访问权限，并退出占用该设备的程序。"}},
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
       {"The PIN pad's answer is damaged, or the PIN pad refused a key.",
        "密码键盘的应答数据已损坏，或密码键盘拒绝了密钥。"},
       {"If a key was sent, check that it was prepared for this pad; otherwise repeat the call and check the "
        "cable.",
        "如发送了密钥，请确认密钥是为该密码键盘准备的；否则请再次调用并检查连接线。"}},
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
       {"The terminal refused the command or failed, or answered otherwise than expected; or a file on the "
        "host "
        "could not be written.",
        "终端拒绝或执行失败，或应答与预期不符；或主机文件无法写入。"},
       {"Check the values sent, that the terminal's software knows the command, and that the host's files "
        "can be "
        "written.",
        "请检查所发送的数据，确认终端软件支持该命令，并确认主机文件可写入。"}},
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

/**
 * Tells whether a list of names contains a name.
 *
 * @param[in] names  separated by single spaces; must not be NULL
 * @param[in] name   a word; may be NULL
 * @return 1 if so; 0 if not, or for NULL
 * @since 1.0.0
 */
static inline int GwqListHolds(const char* names, const char* name) {
  const size_t length = name ? strlen(name) : 0;
  if (length == 0) return 0;
  for (const char* at = strstr(names, name); at; at = strstr(at + 1, name)) {
    if ((at == names || at[-1] == ' ') && (at[length] == ' ' || at[length] == '\0')) return 1;
  }
  return 0;
}

/**
 * Returns what a status means for one function in particular.
 *
 * @param[in] function  its name, such as `MP_SignPDF`; may be NULL
 * @param status        what a function of the library returned
 * @return the row; where only the general texts are known, one whose texts are empty; never NULL
 * @since 1.0.0
 */
static inline const struct GwqFunctionText* GwqFindFunctionText(const char* function, int status) {
  static const struct GwqFunctionText texts[] = {
      {GWQ_BAD_ARGUMENT,
       "PN_GetPinBlock PN_GetPinBlockShowString",
       {"An argument is out of range, or the PIN pad is set to another encryption type or PIN length than "
        "the call asks for.",
        "参数超出范围，或密码键盘当前的加密类型或密码长度与请求不一致。"},
       {"Check the arguments; PN_SetPinPadParameter sets encryption type and PIN length.",
        "请检查参数；可用 PN_SetPinPadParameter 设置加密类型和密码长度。"}},
      {GWQ_BAD_ARGUMENT,
       "PN_DownloadPinPadWK",
       {"An argument is NULL, or the PIN pad refused the key with its result 1.",
        "参数为空，或密码键盘以结果 1 拒绝了密钥。"},
       {"Check that the key was prepared for this pad and for its present factor.",
        "请确认密钥是为该密码键盘及其当前因子准备的。"}},
      {GWQ_BAD_ARGUMENT,
       "MP_ShowPDF MP_ConfirmPDF",
       {"The time is not 1 to 999 seconds, no document is named, or a document cannot be read.",
        "超时时间不在 1 至 999 秒之间，未指定文件，或文件无法读取。"},
       {"Check the arguments and the right to read the documents.", "请检查参数以及文件的读取权限。"}},
      {GWQ_BAD_ARGUMENT,
       "MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"The time is not 1 to 999 seconds, no document or no place to sign is named, a text is not UTF-8, or "
        "a document cannot be read.",
        "超时时间不在 1 至 999 秒之间，未指定文件或签名位置，文本不是 UTF-8，或文件无法读取。"},
       {"Check the arguments and the right to read the documents.", "请检查参数以及文件的读取权限。"}},
      {GWQ_BAD_ARGUMENT,
       "GWQ_StartSign",
       {"A path is missing, the document is no pdf, jpg or htm file, the time is not 1 to 999 seconds, or "
        "the document cannot be read.",
        "缺少路径，文件不是 pdf、jpg 或 htm 类型，超时时间不在 1 至 999 秒之间，或文件无法读取。"},
       {"Check the arguments and the right to read the document.", "请检查参数以及文件的读取权限。"}},
      {GWQ_BAD_ARGUMENT,
       "MP_StartInfoHtmlEx",
       {"An argument is missing or out of range, or the page's file on the host could not be written or "
        "read.",
        "参数缺失或超出范围，或主机上的页面文件无法读写。"},
       {"Check the arguments, and that \"/tmp/infoviewerex.html\" can be written.",
        "请检查参数，并确认 \"/tmp/infoviewerex.html\" 可写入。"}},
      {GWQ_BAD_ARGUMENT,
       "PN_GetInNo",
       {"An argument is missing or out of range, or the prompt is not UTF-8.",
        "参数缺失或超出范围，或提示文本不是 UTF-8。"},
       {"", ""}},
      {GWQ_BAD_ARGUMENT,
       "MP_DownloadFile",
       {"File type or save type is unknown, the firmware package's extension does not begin with dat, or a "
        "file cannot be read.",
        "文件类型或保存类型未知，升级包扩展名不以 dat 开头，或文件无法读取。"},
       {"", ""}},
      {GWQ_NO_ANSWER,
       "MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"The customer did not sign in time, or the terminal could not store a document.",
        "客户未在规定时间内签名，或终端未能保存文件。"},
       {"Ask the customer again; if nothing was shown, check that the documents' paths are absolute.",
        "请重新请客户签名；如终端未显示文件，请检查文件路径是否为绝对路径。"}},
      {GWQ_NO_ANSWER,
       "MP_ConfirmPDF",
       {"The customer did not decide in time, or the terminal could not store a document.",
        "客户未在规定时间内确认，或终端未能保存文件。"},
       {"Ask the customer again; if nothing was shown, check that the documents' paths are absolute.",
        "请重新请客户确认；如终端未显示文件，请检查文件路径是否为绝对路径。"}},
      {GWQ_NO_ANSWER,
       "MP_CheckOut_All",
       {"The customer did not answer the checkout in time.", "客户未在规定时间内完成结算确认。"},
       {"Ask the customer again.", "请重新请客户操作。"}},
      {GWQ_NO_ANSWER,
       "MP_StartInfoHtmlEx",
       {"The customer did not answer the page in time, or the terminal could not store the page.",
        "客户未在规定时间内应答页面，或终端未能保存页面。"},
       {"Ask the customer again.", "请重新请客户操作。"}},
      {GWQ_NO_ANSWER,
       "GWQ_StartSign",
       {"The terminal could not store the document.", "终端未能保存文件。"},
       {"Check the document and the terminal's storage.", "请检查文件以及终端的存储空间。"}},
      {GWQ_NO_ANSWER,
       "PN_GetPin GetPinblockShowString PN_GetPinBlock PN_GetPinBlockShowString",
       {"The customer's time for the PIN ran out, or the PIN pad refused the entry (its refusal 2).",
        "客户密码输入超时，或密码键盘拒绝了输入（拒绝码 2）。"},
       {"Ask for the PIN again.", "请重新输入密码。"}},
      {GWQ_NO_ANSWER,
       "Z11DownLoadFile Z11DownLoadHead pushFileToZ11 MP_ShowPDF MP_DownHeadFile MP_SetBarcodePic "
       "MP_DownloadFile",
       {"The terminal could not store the file: it reported a failure, or its answer was empty.",
        "终端未能保存文件：终端报告失败，或应答为空。"},
       {"Check the terminal's storage, and that the file's path is absolute: its name is what follows "
        "the last \"/\".",
        "请检查终端的存储空间，并确认文件路径为绝对路径：最后一个“/”之后为文件名。"}},
      {GWQ_NO_ANSWER,
       "GetBase46FromFile",
       {"An argument is NULL, the buffer is too small, or nothing could be read.",
        "参数为空，缓冲区太小，或未能读到数据。"},
       {"Check the arguments and the file.", "请检查参数和文件。"}},
      {GWQ_NO_ANSWER,
       "WriteBase64ToFile",
       {"An argument is NULL, or the length is negative.", "参数为空，或长度为负数。"},
       {"Check the arguments.", "请检查参数。"}},
      {GWQ_BAD_FRAME,
       "PN_DownloadPinPadWK",
       {"The PIN pad refused the key (its result 2 or 3), or its answer is damaged.",
        "密码键盘拒绝了密钥（结果 2 或 3），或其应答数据已损坏。"},
       {"Check that the key was prepared for this pad's type and factor, and that the verify key belongs to "
        "it.",
        "请确认密钥符合该密码键盘的加密类型和因子，且校验值与密钥匹配。"}},
      {GWQ_SEND_FAILED,
       "Z11DownLoadFile Z11DownLoadHead pushFileToZ11 MP_ShowPDF MP_DownHeadFile MP_SetBarcodePic "
       "MP_DownloadFile MP_ConfirmPDF MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"A packet of the file could not be sent whole, or the program cancelled while it was sent.",
        "文件数据包未能完整发送，或在发送过程中被程序取消。"},
       {"Repeat the call; if it was not cancelled, check cable and power of the terminal.",
        "请再次调用；如未主动取消，请检查终端的连接线和电源。"}},
      {GWQ_READ_FAILED,
       "GWQ_StartKeyboard",
       {"The customer's time ran out, or the link failed, or a serial read was cancelled.",
        "客户操作超时，或链路故障，或串口读取被取消。"},
       {"Ask the customer again.", "请重新请客户操作。"}},
      {GWQ_READ_FAILED,
       "PN_GetPin GetPinblockShowString PN_GetPinBlock PN_GetPinBlockShowString GWQ_ReadPin GWQ_ReadPinDES "
       "GWQ_ReadPinAnsi",
       {"The customer's time for the PIN ran out, or the link failed, or a serial read was cancelled.",
        "客户密码输入超时，或链路故障，或串口读取被取消。"},
       {"Ask for the PIN again; check the cable if the pad showed nothing.",
        "请重新输入密码；如密码键盘无显示，请检查连接线。"}},
      {GWQ_READ_FAILED,
       "MP_StartEvaluate GWQ_StartEvaluator GWQ_StartInfo MP_StartInfoHtml MP_StartInfoHtmlScreenshot "
       "MP_StartInfoHtmlEx MP_ConfirmPDF MP_CheckOut_All PN_GetInNo",
       {"The terminal kept silent: it told neither an answer nor that the customer's time ran out; or a "
        "serial read was cancelled.",
        "终端没有应答：既未返回客户的选择，也未报告超时；或串口读取被取消。"},
       {"Check the cable and, on a serial port, the baud rate; then ask again.",
        "请检查连接线；使用串口时请检查波特率；然后重新发起。"}},
      {GWQ_READ_FAILED,
       "Z11DownLoadFile Z11DownLoadHead pushFileToZ11 MP_ShowPDF MP_DownHeadFile MP_SetBarcodePic "
       "MP_DownloadFile MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"The terminal did not acknowledge a packet of the file in time.", "终端未及时确认文件数据包。"},
       {"Check the cable and repeat the call.", "请检查连接线，然后再次调用。"}},
      {GWQ_READ_FAILED,
       "PullFile TransProcHW GWQ_StartSign",
       {"The file did not come whole, or the local file could not be created or written.",
        "文件未能完整接收，或本地文件无法创建或写入。"},
       {"Check that the local directory is there and can be written; check the cable.",
        "请确认本地目录存在且可写入，并检查连接线。"}},
      {GWQ_REFUSED,
       "MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"The terminal failed or refused, or the signature could not be fetched or written to the host's "
        "files.",
        "终端执行失败或拒绝，或签名无法取回或无法写入主机文件。"},
       {"Check that the picture's directory is there and can be written, and \"hw.data\" in it; then ask "
        "again.",
        "请确认签名图片所在目录存在且可写入，其中的 \"hw.data\" 也可写入；然后重新发起。"}},
      {GWQ_REFUSED,
       "GWQ_StartSign",
       {"The customer cancelled or did not sign in time, or the terminal failed, or the signature came "
        "damaged.",
        "客户取消或未在规定时间内签名，或终端执行失败，或签名数据损坏。"},
       {"Ask the customer again.", "请重新请客户操作。"}},
      {GWQ_REFUSED,
       "MP_StartInfoHtmlScreenshot",
       {"The answer was no key of this screen, or the picture could not be fetched or written to the host's "
        "file.",
        "应答不是该界面的按键，或截图无法取回或无法写入主机文件。"},
       {"Check that the picture's directory is there and can be written; then ask again.",
        "请确认截图所在目录存在且可写入；然后重新发起。"}},
      {GWQ_REFUSED,
       "MP_StartInfoHtml",
       {"The answer was no key of this screen.", "应答不是该界面的按键。"},
       {"", ""}},
      {GWQ_REFUSED,
       "MP_StartElectronicCard MP_SetEvaluateInfo",
       {"The teller's card could not be sent.", "柜员信息未能发送。"},
       {"Check cable and power of the terminal and repeat the call.",
        "请检查终端的连接线和电源，然后再次调用。"}},
      {GWQ_REFUSED,
       "MP_StartEvaluate",
       {"The customer's time could not be sent.", "超时时间未能发送。"},
       {"Check cable and power of the terminal and repeat the call.",
        "请检查终端的连接线和电源，然后再次调用。"}},
      {GWQ_REFUSED,
       "PN_GetPinBlock",
       {"The PIN pad refused one of the settings or its factor could not be read, or it refused the PIN "
        "entry.",
        "密码键盘拒绝了某项设置，或无法读取因子，或拒绝了密码输入。"},
       {"Check the settings and keys of the PIN pad.", "请检查密码键盘的设置和密钥。"}},
      {GWQ_REFUSED,
       "PN_GetPinBlockShowString",
       {"The terminal could not be opened, or the PIN pad refused one of the settings, its factor, or the "
        "PIN entry.",
        "无法打开终端，或密码键盘拒绝了某项设置、读取因子或密码输入。"},
       {"Check that the terminal is there, then the settings and keys of the PIN pad.",
        "请确认终端已连接，然后检查密码键盘的设置和密钥。"}},
      {GWQ_REFUSED,
       "PN_GetStringBlock",
       {"The terminal did not encipher the text, or the result could not be fetched.",
        "终端未能加密文本，或结果无法取回。"},
       {"", ""}},
      {GWQ_REFUSED,
       "GWQ_UpdateMKey GWQ_DownLoadWKey GWQ_ActiveWKey",
       {"The terminal refused the key, or its place, or the old key.", "终端拒绝了密钥、密钥位置或旧密钥。"},
       {"Check the key's length and place and, for a master key, the old key.",
        "请检查密钥的长度和位置；更换主密钥时请检查旧密钥。"}},
      {GWQ_REFUSED,
       "GWQ_ReadPinDES GWQ_ReadPinAnsi",
       {"The customer cancelled, or the terminal refused: it may hold no active working key.",
        "客户已取消，或终端拒绝：可能没有已激活的工作密钥。"},
       {"Ask again; if no PIN was asked for, load and activate a working key.",
        "请重新发起；如终端未要求输入密码，请下载并激活工作密钥。"}},
      {GWQ_REFUSED,
       "PullFile TransProcHW",
       {"The terminal refused, or a packet of the file came damaged.", "终端拒绝，或文件数据包损坏。"},
       {"Check the file's path on the terminal and repeat the call.",
        "请检查文件在终端上的路径，然后再次调用。"}},
      {GWQ_NO_FILE,
       "MP_DownloadFile",
       {"A local file does not exist, or its path has no \"/\".", "本地文件不存在，或路径中没有“/”。"},
       {"Pass absolute paths of files that are there.", "请传入已存在文件的绝对路径。"}},
      {GWQ_NO_FILE,
       "pushFileToZ11 MP_ShowPDF MP_ConfirmPDF MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG",
       {"A document does not exist on this host.", "主机上不存在该文件。"},
       {"Check the documents' paths.", "请检查文件路径。"}},
      {GWQ_CANCELLED,
       "HIDDownLoad DownVideoFile",
       {"The program stopped the transfer (CancelWrite).", "程序已停止传输（CancelWrite）。"},
       {"", ""}},
      {GWQ_TOO_SMALL,
       "MP_FindHeadPhoto GetVideoList",
       {"The list is longer than the buffer, or an output is NULL.", "列表超出缓冲区大小，或输出参数为空。"},
       {"", ""}},
      {GWQ_TOO_SMALL,
       "GWQ_ReadPin",
       {"The PIN is longer than the buffer.", "密码长度超出缓冲区大小。"},
       {"", ""}},
      {GWQ_TOO_SMALL,
       "MP_SignPDF MP_SignPDF_Voice MP_Sign_With_TZG MP_StartInfoHtml MP_StartInfoHtmlScreenshot "
       "MP_CheckOut_All GWQ_StartInfo PN_GetInNo",
       {"There is no memory left for the texts.", "内存不足，无法处理文本。"},
       {"Pass shorter texts, or free memory.", "请缩短文本，或释放内存。"}},
  };
  static const struct GwqFunctionText none = {0, "", {"", ""}, {"", ""}};
  for (size_t i = 0; i < sizeof texts / sizeof texts[0]; ++i) {
    if (texts[i].status == status && GwqListHolds(texts[i].functions, function)) return &texts[i];
  }
  return &none;
}

/**
 * Returns the constant's name, such as `GWQ_NO_ANSWER`.
 *
 * @param status  what a function of the library returned
 * @return the name
 * @since 1.0.0
 */
static inline const char* GwqStatusName(int status) {
  return GwqFindStatus(status)->name;
}

/**
 * Returns the cause of a status in general, in a sentence.
 *
 * @param status    what a function of the library returned
 * @param language  enum GwqLanguage; anything but GWQ_CHINESE is English
 * @return the cause
 * @since 1.0.0
 */
static inline const char* GwqStatusCause(int status, int language) {
  return GwqFindStatus(status)->cause[language == GWQ_CHINESE];
}

/**
 * Returns what to do about a status in general, in a sentence.
 *
 * @param status    what a function of the library returned
 * @param language  enum GwqLanguage; anything but GWQ_CHINESE is English
 * @return the remedy
 * @since 1.0.0
 */
static inline const char* GwqStatusRemedy(int status, int language) {
  return GwqFindStatus(status)->remedy[language == GWQ_CHINESE];
}

/**
 * Returns why a function returned a status, in a sentence.
 *
 * @param[in] function  its name, such as `MP_SignPDF`; NULL or an unknown one: the general cause
 * @param status        what a function of the library returned
 * @param language      enum GwqLanguage; anything but GWQ_CHINESE is English
 * @return the cause for this function, or the general one
 * @since 1.0.0
 */
static inline const char* GwqStatusCauseOf(const char* function, int status, int language) {
  const char* own = GwqFindFunctionText(function, status)->cause[language == GWQ_CHINESE];
  return *own == '\0' ? GwqStatusCause(status, language) : own;
}

/**
 * Returns what to do about a status that a function returned, in a sentence.
 *
 * @param[in] function  its name, such as `MP_SignPDF`; NULL or an unknown one: the general remedy
 * @param status        what a function of the library returned
 * @param language      enum GwqLanguage; anything but GWQ_CHINESE is English
 * @return the remedy for this function, or the general one
 * @since 1.0.0
 */
static inline const char* GwqStatusRemedyOf(const char* function, int status, int language) {
  const char* own = GwqFindFunctionText(function, status)->remedy[language == GWQ_CHINESE];
  return *own == '\0' ? GwqStatusRemedy(status, language) : own;
}

#endif
