"""A plain model of the packet assembler: bytes in; position, counters and messages out.

It favours being obviously right over being fast: it reads one byte at a time, looks every message
up by walking the whole table, and raises IndexError if it ever had to read past the buffer.
"""

import re
from pathlib import Path
from typing import NamedTuple

CATALOGUE_FILE = Path(__file__).with_name("catalogue.tsv")

START_1, START_2 = 0xA0, 0xA1
END_1, END_2 = 0x0D, 0x0A
END_MARKER_ID = 0xFF
ACKNOWLEDGED = 0x8300
NOT_ACKNOWLEDGED = 0x8400


class Row(NamedTuple):
    """One row of the message catalogue."""

    msg_id: int
    sub_id: int
    min_length: int
    max_length: int
    description: bytes


class Message(NamedTuple):
    """One listed message with its rebuilt packet."""

    msg_id: int
    sub_id: int
    payload_length: int
    packet: bytes

    @property
    def type_form(self):
        return self.msg_id * 256 + self.sub_id


class Counters(NamedTuple):
    good: int = 0
    errored: int = 0
    unknown: int = 0
    ack: int = 0
    nak: int = 0


def unescape(text):
    """The bytes behind a description of the catalogue file."""
    return re.sub(
        rb"\\x([0-9A-F]{2})", lambda match: bytes([int(match[1], 16)]), text.encode("ascii")
    )


def read_catalogue(path=CATALOGUE_FILE):
    rows = []
    for line in path.read_text(encoding="ascii").splitlines():
        if line.startswith("#"):
            continue
        number, msg_id, sub_id, shortest, longest, text = line.split("\t")
        if int(number) != len(rows):
            raise ValueError(f"{path}: row {number} stands in place {len(rows)}")
        rows.append(
            Row(int(msg_id, 16), int(sub_id, 16), int(shortest), int(longest), unescape(text))
        )
    return rows


CATALOGUE = read_catalogue()


def has_sub_id(msg_id):
    return 0x62 <= msg_id <= 0x6F


def checksum(data):
    result = 0
    for byte in data:
        result ^= byte
    return result


def find_row(msg_id, sub_id):
    """The number of the first row with these two bytes, or None. Lengths play no part."""
    for number, row in enumerate(CATALOGUE):
        if row.msg_id == END_MARKER_ID:
            return None
        if row.msg_id == msg_id and row.sub_id == sub_id:
            return number
    return None


def is_last_row(number):
    return CATALOGUE[number + 1].msg_id == END_MARKER_ID


def build_packet(msg_id, sub_id, length, source):
    """A whole packet around `length` bytes that begin with the first body byte.

    The source is one or two bytes longer than the body; what it leaves in the places of the
    checksum and of the end bytes is written over, in this order.
    """
    packet = bytearray(length + 7)
    packet[0] = START_1
    packet[1] = START_2
    packet[2] = length >> 8
    packet[3] = length & 0xFF
    packet[4] = msg_id
    if has_sub_id(msg_id):
        packet[5] = sub_id
    first = 6 if has_sub_id(msg_id) else 5
    for k in range(length):
        packet[first + k] = source[k]
    packet[4 + length] = checksum(packet[4 : 4 + length])
    packet[5 + length] = END_1
    packet[6 + length] = END_2
    return bytes(packet)


class MessageList:
    """Newest message first."""

    def __init__(self):
        self.messages = []

    def add(self, message):
        self.messages.insert(0, message)

    def take_oldest(self):
        return self.messages.pop() if self.messages else None

    def take_newest_of(self, type_form):
        for place, message in enumerate(self.messages):
            if message.type_form == type_form:
                return self.messages.pop(place)
        return None


class PacketAssembler:
    def __init__(self, message_list):
        self.list = message_list
        self.reset_counters()

    def reset_counters(self):
        self.good = self.errored = self.unknown = self.ack = self.nak = 0

    def counters(self):
        return Counters(self.good, self.errored, self.unknown, self.ack, self.nak)

    def update(self, buffer):
        """Scans the buffer from its first byte.

        Returns the position behind the last packet handled when an incomplete packet or a tail of
        two bytes ends the scan, and 0 otherwise.
        """
        size = len(buffer)
        i = 0
        handled = 0
        stopped = False
        while not stopped and i < size:
            if i + 2 >= size:
                return handled if i == size - 2 else 0
            if buffer[i] != START_1:
                i += 1
                continue
            if buffer[i + 1] != START_2:
                i += 2
                continue
            if i + 6 >= size:
                stopped = True
                continue

            length = buffer[i + 2] * 256 + buffer[i + 3]
            msg_id = buffer[i + 4]
            sub_id = buffer[i + 5] if has_sub_id(msg_id) else 0
            row = find_row(msg_id, sub_id)
            if row is None:
                self.unknown += 1
                i += 2
                continue

            if i + 2 + length >= size:
                stopped = True
            elif i + 5 + length >= size:
                stopped = True
            elif checksum(buffer[i + 4 : i + 4 + length]) == buffer[i + 4 + length]:
                body = i + 6 if has_sub_id(msg_id) else i + 5
                self._accept(msg_id, sub_id, length, buffer[body : body + length])
                i = handled = body + length + 1
            else:
                self.errored += 1
                i = handled = i + 5 + length
            # The last message of the table also counts as unknown, whatever became of its packet.
            if is_last_row(row):
                self.unknown += 1
        return handled if stopped else 0

    def _accept(self, msg_id, sub_id, length, source):
        message = Message(msg_id, sub_id, length, build_packet(msg_id, sub_id, length, source))
        self.list.add(message)
        self.good += 1
        if message.type_form == ACKNOWLEDGED:
            self.ack += 1
        if message.type_form == NOT_ACKNOWLEDGED:
            self.nak += 1
