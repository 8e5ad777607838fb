"""Writes the inputs that the fuzz targets begin with, and their dictionaries.

    make_seeds.py FOLDER

FOLDER/TARGET/ gets the inputs and FOLDER/TARGET.dict the dictionary of each target. All are made of
the project's own packets and files. Each target's source says what its input consists of.
"""

import functools
import operator
import re
import struct
import sys
from pathlib import Path
from typing import NamedTuple

ROOT = Path(__file__).resolve().parents[2]


class Row(NamedTuple):
    """A message of the catalogue."""

    msg_id: int
    sub_id: int
    min_length: int
    max_length: int


def read_catalogue():
    lines = (ROOT / "tests/protocol/reference/catalogue.tsv").read_text().splitlines()
    for line in lines[1:-1]:  # without the columns' names and the end marker
        _, msg_id, sub_id, shortest, longest, _ = line.split("\t")
        yield Row(int(msg_id, 16), int(sub_id, 16), int(shortest), int(longest))


MESSAGES = list(read_catalogue())
LONGEST_PAYLOAD = 261
LONGEST_FILE = b"# a comment\n".ljust(1 << 20, b"#")
NMEA = b"$GPZDA,000002.00,11,10,2024,00,00*6F\r\n"


def has_sub_id(msg_id):
    return 0x62 <= msg_id <= 0x6F


def build_packet(msg_id, sub_id, length, body):
    """A whole packet with a payload of `length` bytes; surplus bytes of the body are left out."""
    identity = bytes([msg_id, sub_id]) if has_sub_id(msg_id) else bytes([msg_id])
    payload = (identity + body)[:length]
    checksum = functools.reduce(operator.xor, payload)
    return struct.pack(">HH", 0xA0A1, length) + payload + bytes([checksum]) + b"\r\n"


def packet(row, length=None):
    length = row.max_length if length is None else length
    length = min(max(length, 2), LONGEST_PAYLOAD)
    return build_packet(row.msg_id, row.sub_id, length, bytes(range(1, 256)) + bytes(16))


def damaged(data):
    return data[:-3] + bytes([data[-3] ^ 0x10]) + data[-2:]


def groups(items, size):
    return [items[first : first + size] for first in range(0, len(items), size)]


def streams():
    """Packets of all messages, whole, damaged, cut and among other bytes."""
    for rows in groups(MESSAGES, 10):
        yield b"".join(packet(row, row.min_length) for row in rows)
        yield NMEA.join(packet(row) for row in rows[:3])
    ack = build_packet(0x83, 0, 2, b"\x02\0\0")
    yield damaged(ack) + ack
    yield b"\xa0" + ack + ack[:-1]
    yield b"\xa0\xa1\x00\x09\x61" + ack + b"\xa0\xa1"
    yield NMEA + ack + b"noise\r\n" + NMEA


def packet_assembler():
    choices = bytes([0x00, 0x01, 0x12, 0x31, 0x04, 0x11, 0x20, 0x33])
    return [choices + bytes([3, 9, 1, 40, 0, 0, 0]) + stream for stream in streams()]


def serial_channel():
    def pieces(data):
        return b"".join(bytes([len(piece)]) + piece for piece in groups(data, 60))

    replies = [row for row in MESSAGES if row.msg_id >= 0x80 or row.sub_id >= 0x80]
    seeds = []
    for number, row in enumerate(replies):
        awaited = bytes([row.msg_id, row.sub_id, number % 6])
        data = damaged(packet(row)) * (number % 3) + packet(row) + packet(row, row.min_length)
        seeds.append(awaited + pieces(data) + b"\x80" + bytes([0xFF]) + NMEA * 30)
    # The longest reply, which comes in while a buffer of 1024 bytes gets full.
    longest = max(replies, key=lambda row: min(row.max_length, LONGEST_PAYLOAD))
    for filler in (780, 850, 900, 1000):
        text = (NMEA * 30)[:filler]
        head = bytes([longest.msg_id, longest.sub_id, 1])
        seeds.append(head + pieces(text) + pieces(packet(longest, LONGEST_PAYLOAD)))
    return seeds


def driver_replies():
    return [
        bytes([query, damage, 20]) + body
        for query in range(48)
        for damage, body in ((0, bytes(range(1, 60))), (0, b"\x02\x01"), (1, bytes(30)))
    ]


def driver_operations():
    replies = b"".join(bytes([0, 30]) + bytes([value] * 30) for value in (0, 1, 2))
    ack = build_packet(0x83, 0, 2, b"\x02\0\0")
    answers = (bytes([3]) + replies, bytes([0x80 + len(ack)]) + ack, bytes([0]))
    return [
        b"".join(bytes([choice]) + answer for choice in range(first, first + 4))
        for answer in answers
        for first in range(0, 80, 4)
    ]


def simulated_receiver():
    heads = (bytes([3, 9, 1, 40, 0, 0, 0, 0, 250, 0]), bytes([60] * 7 + [0, 99, 20]))
    commands = [row for row in MESSAGES if row.msg_id < 0x80 and row.sub_id < 0x80]
    return [
        head + b"".join(packet(row, length(row)) for row in rows)
        for head in heads
        for rows in groups(commands, 4)
        for length in (lambda row: row.min_length, lambda row: row.max_length)
    ]


def stream_decoder():
    return [bytes([3, 9, 1, 40, 0, 0, 0]) + stream for stream in streams()]


def trace_file():
    header = '{"orb-sim-trace":1,"started":"2026-11-21T08:20:00Z","device":"/dev/ttyS1"}\n'
    lines, time = header, 0.0
    query = next(row for row in MESSAGES if row.msg_id == 0x02)
    for speaker, data in (
        ("client", packet(query, 2)),
        ("receiver", build_packet(0x83, 0, 2, b"\x02\0\0")),
        ("receiver", packet(next(row for row in MESSAGES if row.msg_id == 0x80))),
        ("client", packet(query, 2)),
        ("receiver", NMEA),
    ):
        time += 0.25
        lines += f'{{"time":{time},"from":"{speaker}","bytes":"{data.hex().upper()}"}}\n'
    return [bytes([9, 200, 1]) + text.encode() for text in (lines, header, lines[:-1])]


def scenario_file():
    files = sorted((ROOT / "simulator/scenarios").glob("*.toml"))
    return [file.read_bytes() for file in files] + [LONGEST_FILE]


def inventory_file():
    return [
        (ROOT / "platform/inventoryd/inventory.example.toml").read_bytes(),
        b'[[module]]\nlocation = 1\nbars = [{ index = 0, address = 0xF0000000, size = 4096 }]\n'
        b'[module.records]\nHardwareSetId = "47205318-001"\n'
        b'"Other\\u0041" = { type = 2, data = "x\\u0042" }\n',
        b'[[module]]\nlocation = 1\n[module.records]\n"null\\u0000" = "x"\n',
        LONGEST_FILE,
    ]


def backup_file():
    return [
        b'[settings]\nelevation-limit = 15\nconstellations = ["gps", "galileo"]\n'
        b'interference-detection = true\n[survey]\nmode = "static"\nlatitude = 48.37\n'
        b"longitude = 11.56\naltitude = 520\n",
        b'[settings]\n[survey]\nmode = "auto"\nlength = 2000\n',
        b"[settings]\nelevation-limit = 200\n",
        b'[settings]\nconstellations = ["a\\nb"]\n',
        LONGEST_FILE,
    ]


def worker_frames():
    number = struct.pack("<BQ", 1, 7)
    text = struct.pack("<BI", 3, 2) + b"ab"
    values = struct.pack("<I", 2) + text + struct.pack("<Bd", 2, 0.5)
    return [b"\0" + struct.pack("<I", 7) + values, b"\1\0" + number + values, b"\1\2" + text * 2]


def elf_program(owner):
    """A program with a loader, a dynamic section and a note of `owner` (four bytes)."""
    texts = b"\0libasan.so.8\0libc.so.6\0pthread_create\0"
    interpreter = b"/lib64/ld-linux-x86-64.so.2\0"
    note = struct.pack("<III", 3, 4, 4) + owner + b"abcd"
    places, at = {}, 64 + 4 * 56
    for name, data in (("texts", texts), ("interp", interpreter), ("note", note)):
        places[name], at = (at, len(data)), at + len(data)
    entries = [(1, 1), (1, 14), (5, places["texts"][0]), (0, 0)]
    dynamic = b"".join(struct.pack("<QQ", *entry) for entry in entries)
    places["dynamic"] = (at, len(dynamic))
    segments = [
        struct.pack("<IIQQQQQQ", kind, flags, place, place, place, size, size, align)
        for kind, flags, (place, size), align in (
            (1, 5, (0, at + len(dynamic)), 0x1000),
            (2, 4, places["dynamic"], 8),
            (3, 4, places["interp"], 1),
            (4, 4, places["note"], 4),
        )
    ]
    identity = b"\x7fELF\x02\x01\x01" + bytes(9)
    header = identity + struct.pack("<HHIQQQIHHHHHH", 3, 62, 1, 0, 64, 0, 0, 64, 56, 4, 0, 0, 0)
    return header + b"".join(segments) + texts + interpreter + note + dynamic


def program_file():
    programs = [elf_program(owner) for owner in (b"Go\0\0", b"GNU\0")]
    return programs + [b"#!/bin/sh -e\necho\n", b"#! /usr/bin/env python3\n", b"text"]


def i2c_bus():
    text = (
        b"port expander at 0x21   port 0   port 1\n"
        b"0 1  input                  ff       ff\n"
        b"2 3  output                 ff       fe\n"
        b"4 5  polarity               00       00\n"
        b"6 7  direction              ff       fe\n"
        b"next register                         3\n"
        b"antenna supply                      off\n"
    )
    transfers = [
        bytes([0, direction, 6, size]) + bytes([2, 0xFE, 0x01]) + bytes(31)
        for direction in (0, 1)
        for size in range(10)
    ]
    plain = [bytes([1, 3, 2, 0xFF, 0xFE, 2])]
    return [bytes([0, 1]) + transfer + text for transfer in transfers + plain]


def quoted(data):
    return '"' + "".join(f"\\x{byte:02x}" for byte in data) + '"'


def packet_words():
    words = {b"\xa0\xa1", b"\x0d\x0a"}
    for row in MESSAGES:
        identity = bytes([row.msg_id] + ([row.sub_id] if has_sub_id(row.msg_id) else []))
        words.add(struct.pack(">HH", 0xA0A1, max(row.min_length, 2)) + identity)
        words.add(packet(row, row.min_length))
    return {word for word in words if len(word) <= 64}


def toml_words(file, code):
    """The words in those parts of a file that the expression `code` finds."""
    found = re.findall(code, (ROOT / file).read_text(encoding="utf-8"), re.MULTILINE)
    words = set(re.findall(r"[A-Za-z][A-Za-z0-9-]+", "\n".join(found)))
    symbols = ("[", "]", "[[", "]]", "{", "}", "=", '"', "'", '"""')
    values = ("0x", "nan", "-inf", "1e400", "\\u0000")
    return {word.encode() for word in words | set(symbols + values)}


TRACE_WORDS = {
    word.encode()
    for word in ('"orb-sim-trace":1', '"time":', '"from":"client"', '"from":"receiver"')
    + ('"bytes":"', "{", "}", "\n", "A0A1", "0D0A", "1e300", "-1")
}
PROGRAM_WORDS = {b"#!", b"\x7fELF", b"libasan.so", b"Go\0"}
PORT_WORDS = {b"ff", b"00", b"port expander at 0x21", b"next register"}

TARGETS = {
    packet_assembler: packet_words,
    serial_channel: packet_words,
    driver_replies: set,
    driver_operations: packet_words,
    simulated_receiver: packet_words,
    stream_decoder: packet_words,
    trace_file: lambda: TRACE_WORDS,
    scenario_file: lambda: toml_words("docs/scenarios.md", r"`[^`]+`|^    .*$"),
    inventory_file: lambda: toml_words("platform/inventoryd/inventory.example.toml", r"^[^#\n]+"),
    backup_file: lambda: toml_words("docs/orbctl.md", r"`[^`]+`|^    .*$"),
    worker_frames: set,
    program_file: lambda: PROGRAM_WORDS,
    i2c_bus: lambda: PORT_WORDS,
}


def main(folder):
    for target, words in TARGETS.items():
        seeds = folder / target.__name__
        seeds.mkdir(parents=True, exist_ok=True)
        for number, seed in enumerate(target()):
            (seeds / f"{number:03}").write_bytes(seed)
        lines = sorted(quoted(word) for word in words())
        (folder / f"{target.__name__}.dict").write_text("".join(line + "\n" for line in lines))


main(Path(sys.argv[1]))
