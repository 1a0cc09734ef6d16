/* SPDX-License-Identifier: MIT */
#include "instant_usb.h"

#include <libusb-1.0/libusb.h>
#include <string.h>

static char s_device;
static char s_handle;
static libusb_device* s_list[] = {(libusb_device*)&s_device, NULL};

ssize_t libusb_get_device_list(libusb_context* context, libusb_device*** list) {
  (void)context;
  *list = s_list;
  return 1;
}

void libusb_free_device_list(libusb_device** list, int unreference) {
  (void)list;
  (void)unreference;
}

int libusb_get_device_descriptor(libusb_device* device, struct libusb_device_descriptor* descriptor) {
  (void)device;
  memset(descriptor, 0, sizeof *descriptor);
  descriptor->idVendor = INSTANT_VID;
  descriptor->idProduct = INSTANT_PID;
  return 0;
}

uint8_t libusb_get_bus_number(libusb_device* device) {
  (void)device;
  return 1;
}

uint8_t libusb_get_device_address(libusb_device* device) {
  (void)device;
  return 5;
}

int libusb_get_port_numbers(libusb_device* device, uint8_t* ports, int room) {
  (void)device;
  if (room < 1) return LIBUSB_ERROR_OVERFLOW;
  ports[0] = 1;
  return 1;
}

int libusb_open(libusb_device* device, libusb_device_handle** handle) {
  (void)device;
  *handle = (libusb_device_handle*)&s_handle;
  return 0;
}

void libusb_close(libusb_device_handle* handle) {
  (void)handle;
}

int libusb_kernel_driver_active(libusb_device_handle* handle, int interface) {
  (void)handle;
  (void)interface;
  return 0;
}

int libusb_detach_kernel_driver(libusb_device_handle* handle, int interface) {
  (void)handle;
  (void)interface;
  return 0;
}

int libusb_claim_interface(libusb_device_handle* handle, int interface) {
  (void)handle;
  (void)interface;
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* moved, unsigned int timeout) {
  static const char answer[] = "\x02V1.0.0|20240615\x03";
  (void)handle;
  (void)timeout;
  if ((endpoint & 0x80) == 0) {
    *moved = length;
    return 0;
  }
  memcpy(data, answer, sizeof answer);
  *moved = length;
  return 0;
}

int libusb_init(libusb_context** context) {
  (void)context;
  return 0;
}

void libusb_exit(libusb_context* context) {
  (void)context;
}
