// SPDX-License-Identifier: MIT
/* The port descriptor's layout, for C and C++: programs in both fill the same record. */
#ifndef TESTS_ABI_DESCRIPTOR_LAYOUT_H
#define TESTS_ABI_DESCRIPTOR_LAYOUT_H

#include <assert.h>
#include <stddef.h>

#include <gwq/frame/port.h>

static_assert(offsetof(TransMssionLinux_t, nHead) == 0, "nHead");
static_assert(offsetof(TransMssionLinux_t, nLinkType) == 4, "nLinkType");
static_assert(offsetof(TransMssionLinux_t, nReserved) == 8, "nReserved");
static_assert(offsetof(TransMssionLinux_t, nPid) == 12, "nPid");
static_assert(offsetof(TransMssionLinux_t, nVid) == 16, "nVid");
static_assert(offsetof(TransMssionLinux_t, nPortIndex) == 20, "nPortIndex");
static_assert(offsetof(TransMssionLinux_t, nBaud) == 24, "nBaud");
static_assert(offsetof(TransMssionLinux_t, szTtyName) == 28, "szTtyName");
static_assert(offsetof(TransMssionLinux_t, nParam) == 164, "nParam");
static_assert(offsetof(TransMssionLinux_t, nTimeOut) == 168, "nTimeOut");
static_assert(offsetof(TransMssionLinux_t, pfnEndOfRead) == 176, "pfnEndOfRead");
static_assert(sizeof(((TransMssionLinux_t*)0)->szTtyName) == 136, "size of szTtyName");
static_assert(sizeof(((TransMssionLinux_t*)0)->nTimeOut) == 4, "size of nTimeOut");
static_assert(sizeof(TransMssionLinux_t) > 184, "a reserved area follows the predicate");
static_assert(GWQ_LINK_USB == 0 && GWQ_LINK_SERIAL == 1, "values of nLinkType");

#endif
