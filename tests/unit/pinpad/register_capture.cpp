// SPDX-License-Identifier: MIT
#include "unit/pinpad/register_capture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace gwq::test {
namespace {

#if defined(__x86_64__)
constexpr std::size_t kRegisters = 16;
#elif defined(__aarch64__)
constexpr std::size_t kRegisters = 32;
#else
#error "no capture of registers on this architecture"
#endif
constexpr std::size_t kMaxCaptures = 512;

using Register = std::array<std::uint8_t, 16>;
using Capture = std::array<Register, kRegisters>;

std::array<Capture, kMaxCaptures> g_captures;

}  // namespace
}  // namespace gwq::test

// Where the next capture goes, where there is no room any more, and whether the conversion fills
// the registers: for the code below.
extern "C" {
[[gnu::visibility("hidden"), gnu::used]] int gwq_fill_registers = 0;
[[gnu::visibility("hidden"), gnu::used]] gwq::test::Capture* gwq_next_capture =
    gwq::test::g_captures.data() + gwq::test::kMaxCaptures;
[[gnu::visibility("hidden"), gnu::used]] gwq::test::Capture* gwq_no_capture =
    gwq::test::g_captures.data() + gwq::test::kMaxCaptures;
}

// Each entry stores the registers, with those alone that no argument is in, and goes on to the
// function itself.
#if defined(__x86_64__)
asm(R"(
        .macro store_registers
        movq    gwq_next_capture(%rip), %r10
        cmpq    gwq_no_capture(%rip), %r10
        jae     1f
        .irp    n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
        movdqu  %xmm\n, 16*\n(%r10)
        .endr
        addq    $256, %r10
        movq    %r10, gwq_next_capture(%rip)
1:
        .endm

        .macro captured name
        .globl  __wrap_\name
        .type   __wrap_\name, @function
__wrap_\name:
        endbr64
        store_registers
        jmp     __real_\name@PLT
        .size   __wrap_\name, . - __wrap_\name
        .endm

        .text
        captured libusb_get_device_list
        captured libusb_open
        captured libusb_bulk_transfer

        .globl  __wrap_GetHexString
        .type   __wrap_GetHexString, @function
__wrap_GetHexString:
        endbr64
        pushq   %rdi
        call    __real_GetHexString@PLT
        popq    %rdi
        cmpl    $0, gwq_fill_registers(%rip)
        je      1f
        .irp    n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15
        movdqu  (%rdi), %xmm\n
        .endr
1:
        ret
        .size   __wrap_GetHexString, . - __wrap_GetHexString

        .globl  gwq_capture_registers
        .type   gwq_capture_registers, @function
gwq_capture_registers:
        endbr64
        store_registers
        ret
        .size   gwq_capture_registers, . - gwq_capture_registers
)");
#else
asm(R"(
        .macro store_registers
        adrp    x16, gwq_next_capture
        ldr     x16, [x16, #:lo12:gwq_next_capture]
        adrp    x17, gwq_no_capture
        ldr     x17, [x17, #:lo12:gwq_no_capture]
        cmp     x16, x17
        b.hs    1f
        .irp    n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
        str     q\n, [x16], #16
        .endr
        adrp    x17, gwq_next_capture
        str     x16, [x17, #:lo12:gwq_next_capture]
1:
        .endm

        .macro captured name
        .globl  __wrap_\name
        .type   __wrap_\name, %function
__wrap_\name:
        hint    #34
        store_registers
        b       __real_\name
        .size   __wrap_\name, . - __wrap_\name
        .endm

        .text
        captured libusb_get_device_list
        captured libusb_open
        captured libusb_bulk_transfer

        .globl  __wrap_GetHexString
        .type   __wrap_GetHexString, %function
__wrap_GetHexString:
        hint    #34
        stp     x0, x30, [sp, #-16]!
        bl      __real_GetHexString
        ldp     x9, x30, [sp], #16
        adrp    x10, gwq_fill_registers
        ldr     w10, [x10, #:lo12:gwq_fill_registers]
        cbz     w10, 1f
        .irp    n, 0,1,2,3,4,5,6,7,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
        ldr     q\n, [x9]
        .endr
1:
        ret
        .size   __wrap_GetHexString, . - __wrap_GetHexString

        .globl  gwq_capture_registers
        .type   gwq_capture_registers, %function
gwq_capture_registers:
        hint    #34
        store_registers
        ret
        .size   gwq_capture_registers, . - gwq_capture_registers
)");
#endif

namespace gwq::test {
namespace {

bool Holds(const Capture& capture, std::string_view part) {
  return std::any_of(capture.begin(), capture.end(), [part](const Register& one) {
    return std::search(one.begin(), one.end(), part.begin(), part.end()) != one.end();
  });
}

}  // namespace

FullRegisters::FullRegisters() {
  gwq_fill_registers = 1;
}

FullRegisters::~FullRegisters() {
  gwq_fill_registers = 0;
}

RegisterCapture::RegisterCapture() {
  gwq_next_capture = g_captures.data();
}

RegisterCapture::~RegisterCapture() {
  g_captures.fill({});
  gwq_next_capture = gwq_no_capture;
}

int CapturedRegisters() {
  return static_cast<int>(gwq_next_capture - g_captures.data());
}

int CapturesThatHold(std::string_view text, std::size_t length) {
  const Capture* const first = g_captures.data();
  const Capture* const last = gwq_next_capture;
  return static_cast<int>(std::count_if(first, last, [text, length](const Capture& capture) {
    for (std::size_t at = 0; at + length <= text.size(); ++at) {
      if (Holds(capture, text.substr(at, length))) return true;
    }
    return false;
  }));
}

}  // namespace gwq::test
