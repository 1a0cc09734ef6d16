# SPDX-License-Identifier: MIT
"""Reads and makes captures of USB by the published layouts, without any code of the terminal's."""
import struct

SECTION, INTERFACE, PACKET = 0x0A0D0D0A, 1, 6
USER0, USBMON, USBMON_MMAPPED = 147, 189, 220


def blocks(data):
    """The blocks of a pcapng file in little-endian order: type and body."""
    at = 0
    while at < len(data):
        kind, size = struct.unpack_from("<II", data, at)
        assert size % 4 == 0 and size >= 12, f"block at {at} has length {size}"
        assert struct.unpack_from("<I", data, at + size - 4)[0] == size, f"block at {at} has two lengths"
        yield kind, data[at + 8 : at + size - 4]
        at += size
    assert at == len(data)


def options(data):
    found, at = {}, 0
    while at < len(data):
        code, size = struct.unpack_from("<HH", data, at)
        if code == 0:
            break
        found[code] = data[at + 4 : at + 4 + size]
        at += 4 + (size + 3) // 4 * 4
    return found


class Packet:
    def __init__(self, body, interfaces):
        number, high, low, captured, length = struct.unpack_from("<IIIII", body)
        assert captured == length
        self.link_type = interfaces[number]
        self.time_us = high << 32 | low
        self.data = body[20 : 20 + captured]
        self.comment = options(body[20 + (captured + 3) // 4 * 4 :]).get(1, b"").decode()


def read_pcapng(path):
    data = path.read_bytes()
    packets, interfaces = [], []
    for kind, body in blocks(data):
        if kind == SECTION:
            assert struct.unpack_from("<IHHq", body) == (0x1A2B3C4D, 1, 0, -1)
        elif kind == INTERFACE:
            interfaces.append(struct.unpack_from("<H", body)[0])
            assert options(body[8:])[9] == b"\x06", "microseconds"
        elif kind == PACKET:
            packets.append(Packet(body, interfaces))
    return packets


class UsbEvent:
    def __init__(self, packet):
        assert packet.link_type == USBMON_MMAPPED
        (self.id, event, self.type, self.endpoint, self.device, self.bus, setup, data, seconds, micros, self.status,
         self.length, captured, self.setup) = struct.unpack_from("<QcBBBHBBqiiII8s", packet.data)
        self.event, self.has_setup, self.has_data = event.decode(), setup == 0, data == 0
        self.time_us = seconds * 1_000_000 + micros
        self.data = packet.data[64:]
        self.comment = packet.comment
        assert len(self.data) == captured and self.time_us == packet.time_us


def usbmon(event, endpoint, data=b"", *, number, length=None, status=0, device=5, bus=1, kind=1, setup=None,
           link=USBMON, order="<", time_us=0):
    """A packet as the kernel captures it: 48 bytes, or 64, and the data."""
    head = struct.pack(
        order + "QcBBBHBBqiiII8s", number, event.encode(), kind, endpoint, device, bus, 0 if setup else ord("-"),
        0 if data else ord("<" if endpoint & 0x80 else ">"), time_us // 1_000_000, time_us % 1_000_000, status,
        len(data) if length is None else length, len(data), setup or bytes(8))
    return head + (bytes(16) if link == USBMON_MMAPPED else b"") + data


def pcap(packets, link, *, order="<", nano=False, snap=None):
    """`packets` are pairs of a time in microseconds and the bytes."""
    magic = 0xA1B23C4D if nano else 0xA1B2C3D4
    file = struct.pack(order + "IHHiIII", magic, 2, 4, 0, 0, 262144, link)
    for time_us, packet in packets:
        fraction = time_us % 1_000_000 * (1000 if nano else 1)
        kept = packet[:snap]
        file += struct.pack(order + "IIII", time_us // 1_000_000, fraction, len(kept), len(packet)) + kept
    return file
