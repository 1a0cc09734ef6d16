/* SPDX-License-Identifier: MIT */
#include "bare_exchange.h"

#include <libusb-1.0/libusb.h>
#include <string.h>

static libusb_device* Find(libusb_device** list, int vid, int pid) {
  for (; *list != NULL; ++list) {
    struct libusb_device_descriptor descriptor;
    libusb_get_device_descriptor(*list, &descriptor);
    if (descriptor.idVendor == vid && descriptor.idProduct == pid) return *list;
  }
  return NULL;
}

static libusb_device_handle* Open(libusb_device** list, int vid, int pid) {
  libusb_device* const device = Find(list, vid, pid);
  libusb_device_handle* handle = NULL;
  if (device == NULL || libusb_open(device, &handle) != 0) return NULL;
  if (libusb_kernel_driver_active(handle, 0) == 1) libusb_detach_kernel_driver(handle, 0);
  libusb_claim_interface(handle, 0);
  return handle;
}

static int Write(libusb_device_handle* handle, unsigned char* report) {
  int moved = 0;
  libusb_bulk_transfer(handle, 0x02, report, BARE_REPORT, &moved, 1000);
  return moved;
}

static int Read(libusb_device_handle* handle, unsigned char* report) {
  int moved = 0;
  for (int i = 0; i < 25 && moved == 0; ++i) {
    libusb_bulk_transfer(handle, 0x81, report, BARE_REPORT, &moved, 200);
  }
  return moved;
}

int BareExchange(int vid, int pid, const char* command, char answer[BARE_REPORT]) {
  libusb_device** list = NULL;
  int result = -1;
  libusb_get_device_list(NULL, &list);
  libusb_device_handle* const handle = Open(list, vid, pid);
  if (handle != NULL) {
    unsigned char report[BARE_REPORT] = {0};
    memcpy(report, command, strlen(command));
    if (Write(handle, report) == BARE_REPORT) result = Read(handle, (unsigned char*)answer);
    libusb_close(handle);
  }
  libusb_free_device_list(list, 1);
  return result;
}

static int WritePacket(libusb_device_handle* handle, const BarePacket* packet) {
  unsigned char answer[BARE_REPORT];
  for (size_t i = 0; i < packet->reports; ++i) {
    if (Write(handle, (unsigned char*)packet->bytes + i * BARE_REPORT) != BARE_REPORT) return -1;
  }
  return Read(handle, answer) > 1 && answer[1] != 'U' ? 0 : -1;
}

int BarePush(int vid, int pid, const BarePacket* packets, size_t count) {
  libusb_device** list = NULL;
  int result = -1;
  libusb_get_device_list(NULL, &list);
  libusb_device_handle* const handle = Open(list, vid, pid);
  if (handle != NULL) {
    result = 0;
    for (size_t i = 0; i < count && result == 0; ++i) result = WritePacket(handle, &packets[i]);
    libusb_close(handle);
  }
  libusb_free_device_list(list, 1);
  return result;
}
