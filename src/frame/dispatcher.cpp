// SPDX-License-Identifier: MIT
#include "frame/internal/dispatcher.h"

#include <cstddef>
#include <cstring>

#include <gwq/frame/port.h>
#include <gwq/status_codes.h>
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
  return CallPredicate(g_BackUpParam.predicate, data, count);
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

int DrainLink(int silence_ms) {
  const Link* link = LinkInUse();
  return link == nullptr ? static_cast<int>(GWQ_LINK_UNUSABLE) : link->drain(silence_ms);
}

SavedParameters ParametersInUse() {
  return g_BackUpParam;
}

// Only the link type is atomic: it is all that a cancelling thread reads.
void UseParameters(const SavedParameters& parameters) {
  g_BackUpParam.timeout_s = parameters.timeout_s;
  g_BackUpParam.predicate = parameters.predicate;
  g_BackUpParam.parameter = parameters.parameter;
  StoreShared(g_BackUpParam.link_type, parameters.link_type);
}

// Contract: a failed open keeps the parameters, as a close does, so that later calls reach the link
// used before.
int ICC_OpenLinuxTransPort(TransMssionLinux_t* port) {
  const Link* link = port == nullptr ? nullptr : LinkOfType(port->nLinkType);
  if (link == nullptr) return GWQ_LINK_UNUSABLE;
  const int result = link->open({port->nVid, port->nPid, port->szTtyName, port->nBaud});
  if (result == 0) UseParameters(FromDescriptor(*port));
  return result;
}

int ICC_WriteDataToLinuxTransPort(unsigned char* data, int length) {
  return WriteOnLink(data, length);
}

int ICC_ReadDataFromLinuxTransPort(unsigned char* buffer, int maximum) {
  const Link* link = LinkInUse();
  if (link == nullptr) return GWQ_LINK_UNUSABLE;
  return link->read(buffer, maximum, g_BackUpParam.timeout_s, &EndOfSaved);
}

int ICC_CloseLinuxTransPort() {
  const Link* link = LinkInUse();
  return link == nullptr ? GWQ_LINK_UNUSABLE : link->close();
}

int ICC_CancelReadLinuxTransPort() {
  const Link* link = LinkInUse();
  return link == nullptr ? GWQ_LINK_UNUSABLE : link->cancel();
}

int ICC_ChangeLinuxTermParam(TransMssionLinux_t* port) {
  if (port != nullptr) UseParameters(FromDescriptor(*port));
  return 0;
}

int ICC_OpenTransPort(TransMssionLinux_t* port) {
  return gwq::ICC_OpenLinuxTransPort(port);
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
  return gwq::ICC_ChangeLinuxTermParam(port);
}

int WriteData(int len, unsigned char* data) {
  return ICC_WriteDataToTransPort(data, len) < len ? GWQ_SEND_FAILED : GWQ_OK;
}

}  // namespace gwq

using namespace gwq;

// Contract: copies the first bytes of the descriptor as raw memory; its fields do not match the
// parameters.
void SetBackUpParam(TransMssionLinux_t* port) {
  if (port == nullptr) return;
  SavedParameters raw;
  std::memcpy(&raw, port, sizeof raw);
  UseParameters(raw);
}
