// SPDX-License-Identifier: MIT
/* The layouts of the additions' structs, for C and C++: their sizes never change. */
#ifndef TESTS_ABI_EXTRA_LAYOUT_H
#define TESTS_ABI_EXTRA_LAYOUT_H

#include <assert.h>
#include <stddef.h>

#include <gwq/extra.h>

static_assert(sizeof(struct GwqFailure) == 1408, "size of GwqFailure");
static_assert(offsetof(struct GwqFailure, status) == 0, "status");
static_assert(offsetof(struct GwqFailure, step) == 4, "step");
static_assert(offsetof(struct GwqFailure, error_source) == 8, "error_source");
static_assert(offsetof(struct GwqFailure, error) == 12, "error");
static_assert(offsetof(struct GwqFailure, bus) == 16, "bus");
static_assert(offsetof(struct GwqFailure, address) == 20, "address");
static_assert(offsetof(struct GwqFailure, vendor) == 24, "vendor");
static_assert(offsetof(struct GwqFailure, product) == 28, "product");
static_assert(offsetof(struct GwqFailure, holder) == 32, "holder");
static_assert(offsetof(struct GwqFailure, kernel_driver) == 36, "kernel_driver");
static_assert(offsetof(struct GwqFailure, function) == 128, "function");
static_assert(offsetof(struct GwqFailure, error_text) == 192, "error_text");
static_assert(offsetof(struct GwqFailure, port_path) == 320, "port_path");
static_assert(offsetof(struct GwqFailure, tty) == 352, "tty");
static_assert(offsetof(struct GwqFailure, holder_name) == 416, "holder_name");
static_assert(offsetof(struct GwqFailure, advice) == 448, "advice");
static_assert(offsetof(struct GwqFailure, reserved_text) == 1216, "reserved_text");

static_assert(sizeof(struct GwqTerminalPlace) == 128, "size of GwqTerminalPlace");
static_assert(offsetof(struct GwqTerminalPlace, bus) == 0, "bus");
static_assert(offsetof(struct GwqTerminalPlace, address) == 4, "address");
static_assert(offsetof(struct GwqTerminalPlace, vendor) == 8, "vendor");
static_assert(offsetof(struct GwqTerminalPlace, product) == 12, "product");
static_assert(offsetof(struct GwqTerminalPlace, may_open) == 16, "may_open");
static_assert(offsetof(struct GwqTerminalPlace, holder) == 20, "holder");
static_assert(offsetof(struct GwqTerminalPlace, port_path) == 64, "port_path");
static_assert(offsetof(struct GwqTerminalPlace, holder_name) == 96, "holder_name");

#endif
