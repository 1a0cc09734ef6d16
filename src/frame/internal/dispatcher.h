// SPDX-License-Identifier: MIT
// The link in use and its parameters.
#pragma once

#include <cstdint>

#include <gwq/frame/port.h>
#include <gwq/links/end_of_read.h>

namespace gwq {

// The parameters that are kept from the descriptor. The layout is fixed: SetBackUpParam copies a
// descriptor's first bytes over it.
struct SavedParameters {
  std::int32_t timeout_s;
  GwqEndOfRead predicate;
  std::int32_t link_type;
  std::int32_t parameter;
};

// The functions of port.h, for code of the library: what they fail of is noted for the call that
// runs.
int ICC_OpenTransPort(TransMssionLinux_t* port);
int ICC_ReadDataFromTransPort(unsigned char* buffer, int maximum);
int ICC_CloseTransPort();
int ICC_CancelReadTransPort();

// As ICC_WriteDataToTransPort.
int WriteOnLink(unsigned char* data, int length);

// Throws away what arrives on the link that is open; as Link::drain.
int DrainLink(int silence_ms);

// For exchanges over a link that is already open.
SavedParameters ParametersInUse();
void UseParameters(const SavedParameters& parameters);

}  // namespace gwq
