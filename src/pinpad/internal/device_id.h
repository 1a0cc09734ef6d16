// SPDX-License-Identifier: MIT
// The PIN pad's device id.
#pragma once

namespace gwq {

// Drains, reads the device id over USB and logs, as PN_ReadDeviceId. Returns its status; a failure
// leaves `device_id` unchanged.
int ReadDeviceId(int baud, char* device_id);

}  // namespace gwq
