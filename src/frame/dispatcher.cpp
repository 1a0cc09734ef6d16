#include "frame/internal/dispatcher.h"

#include <cstddef>
#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "diag/internal/shared_word.h"
#include "frame/internal/turn.h"
#include "links/internal/link.h"

namespace gwq {
namespace {

static_assert(offsetof(SavedParameters, predicate) == 8 && offsetof(SavedParameters, link_type) == 16 &&
              sizeof(SavedParameters) == 24);

SavedParameters g_BackUpParam{};

const Link* LinkInUse() {
  return LinkOfType(LoadShared(g_BackUpParam.link_type));
}

int EndOfSaved(unsigned char* data, int count) {
  return AskPredicate(g_BackUpParam.predicate, data, count);
}

SavedParameters FromDescriptor(const TransMssionLinux_t& port) {
  return {port.nTimeOut, port.pfnEndOfRead, port.nLinkType, port.nParam};
}

}  // namespace

int WriteOnLink(unsigned char* data, int length) {
  const Link* link = LinkInUse();
  if (link == nullptr) return GWQ_LINK_UNUSABLE;
  return link->write(data, length, {g_BackUpParam.timeout_s, &ExchangeCancelled});
}

SavedParameters ParametersInUse() {
  return g_BackUpParam;
}

// The link type alone is read by a cancelling thread.
void UseParameters(const SavedParameters& parameters) {
  g_BackUpParam.timeout_s = parameters.timeout_s;
  g_BackUpParam.predicate = parameters.predicate;
  g_BackUpParam.parameter = parameters.parameter;
  StoreShared(g_BackUpParam.link_type, parameters.link_type);
}

}  // namespace gwq

int ICC_OpenLinuxTransPort(TransMssionLinux_t* port) {
  const gwq::Link* link = port == nullptr ? nullptr : gwq::LinkOfType(port->nLinkType);
  if (link == nullptr) return GWQ_LINK_UNUSABLE;
  const int result = link->open({port->nVid, port->nPid, port->szTtyName, port->nBaud});
  if (result == 0) gwq::UseParameters(gwq::FromDescriptor(*port));
  return result;
}

int ICC_WriteDataToLinuxTransPort(unsigned char* data, int length) {
  return gwq::WriteOnLink(data, length);
}

int ICC_ReadDataFromLinuxTransPort(unsigned char* buffer, int maximum) {
  const gwq::Link* link = gwq::LinkInUse();
  if (link == nullptr) return GWQ_LINK_UNUSABLE;
  return link->read(buffer, maximum, gwq::g_BackUpParam.timeout_s, &gwq::EndOfSaved);
}

int ICC_CloseLinuxTransPort() {
  const gwq::Link* link = gwq::LinkInUse();
  return link == nullptr ? GWQ_LINK_UNUSABLE : link->close();
}

int ICC_CancelReadLinuxTransPort() {
  const gwq::Link* link = gwq::LinkInUse();
  return link == nullptr ? GWQ_LINK_UNUSABLE : link->cancel();
}

int ICC_ChangeLinuxTermParam(TransMssionLinux_t* port) {
  if (port != nullptr) gwq::UseParameters(gwq::FromDescriptor(*port));
  return 0;
}

void SetBackUpParam(TransMssionLinux_t* port) {
  if (port == nullptr) return;
  gwq::SavedParameters raw;
  std::memcpy(&raw, port, sizeof raw);
  gwq::UseParameters(raw);
}

int ICC_OpenTransPort(TransMssionLinux_t* port) {
  return ICC_OpenLinuxTransPort(port);
}

int ICC_WriteDataToTransPort(unsigned char* data, int length) {
  return ICC_WriteDataToLinuxTransPort(data, length);
}

int ICC_ReadDataFromTransPort(unsigned char* buffer, int maximum) {
  return ICC_ReadDataFromLinuxTransPort(buffer, maximum);
}

int ICC_CloseTransPort() {
  return ICC_CloseLinuxTransPort();
}

int ICC_CancelReadTransPort() {
  return ICC_CancelReadLinuxTransPort();
}

int ICC_ChangeTermParam(TransMssionLinux_t* port) {
  return ICC_ChangeLinuxTermParam(port);
}

int WriteData(int len, unsigned char* data) {
  return ICC_WriteDataToTransPort(data, len) < len ? GWQ_SEND_FAILED : GWQ_OK;
}
