"""The buffers of explicit_vectors.tsv, in named groups.

Each generator function yields (name, updates): the buffers that one builder sees in turn.
"""

from itertools import product

from buffer_generator import (
    DENSE_ALPHABET,
    FALSE_STARTS,
    KNOWN,
    BufferGenerator,
    Random,
    frame_around,
)
from edge_cases import EDGE_CASES
from packet_assembler import Row, has_sub_id

BODY_SEED = 0x626F6479
MUTATION_SEED = 0x6D757461
FILLER = 0x5A

ACK = bytes.fromhex("A0A100028301820D0A")
QUERY = bytes.fromhex("A0A100026502670D0A")
# With and without a sub-id, no payload, the last row of the catalogue.
PROBES = [(0x83, 0, 2), (0x10, 0, 1), (0x65, 1, 7), (0x65, 2, 2), (0, 0, 0), (0xC3, 0, 3)]


def frame(msg_id, sub_id, length, body=None):
    ids = bytes([msg_id, sub_id]) if has_sub_id(msg_id) else bytes([msg_id])
    if body is None:
        body = bytes([FILLER]) * max(length - len(ids), 0)
    return frame_around(ids + body, length)


def row_frame(row: Row, length, random):
    ids = 2 if has_sub_id(row.msg_id) else 1
    return frame(row.msg_id, row.sub_id, length, random.bytes(max(length - ids, 0)))


def spoilt(packet, place, value=0x01):
    return packet[:place] + bytes([packet[place] ^ value]) + packet[place + 1 :]


def edge_cases():
    for name, updates, _, _ in EDGE_CASES:
        yield name, [bytes.fromhex(update) for update in updates]


def catalogue_good():
    """Every row at both ends of its lengths and just outside them, with a tail of two bytes."""
    random = Random(BODY_SEED)
    for number, row in enumerate(KNOWN):
        shorter, longer = max(row.min_length - 1, 0), row.max_length + 1
        for length in sorted({shorter, row.min_length, row.max_length, longer}):
            yield f"row {number} length {length}", [row_frame(row, length, random) + b"\xA0\xA1"]


def catalogue_spoilt():
    """Every row with its checksum or one of three other bytes changed, then a good packet."""
    random = Random(BODY_SEED + 1)
    for number, row in enumerate(KNOWN):
        packet = row_frame(row, row.min_length, random)
        yield f"row {number} checksum", [spoilt(packet, len(packet) - 3) + ACK]
        yield f"row {number} id", [spoilt(packet, 4, 0x80) + ACK]
        yield f"row {number} length", [spoilt(packet, 3) + ACK]
        yield f"row {number} behind id", [spoilt(packet, 5) + ACK]


def catalogue_cut():
    """Every row in its shortest form, cut behind each byte; long ones only near their limits."""
    random = Random(BODY_SEED + 2)
    for number, row in enumerate(KNOWN):
        packet = row_frame(row, row.min_length, random)
        for size in range(len(packet) + 1):
            if size <= 24 or size > len(packet) - 6:
                yield f"row {number} first {size}", [packet[:size]]


def boundaries():
    """Probes behind several prefixes, cut behind each byte and with up to three bytes more."""
    prefixes = {"nothing": b"", "filler": b"\x00", "noise": b"\x55\xA1\x0D", "packet": QUERY}
    for prefix_name, prefix in prefixes.items():
        for msg_id, sub_id, length in PROBES:
            packet = frame(msg_id, sub_id, length)
            for kind, middle in (("good", packet), ("bad", spoilt(packet, 4 + length))):
                whole = prefix + middle + b"\x11\xA0\xA1"
                for size in range(len(prefix), len(whole) + 1):
                    name = f"{kind} {msg_id:02X}{sub_id:02X} behind {prefix_name} first {size}"
                    yield name, [whole[:size]]


def claimed_lengths():
    """Claimed lengths that the buffer just misses, just meets or just exceeds."""
    lengths = (0, 1, 2, 3, 4, 5, 6, 10, 127, 128, 255, 256, 257, 511, 32767, 32768, 65534, 65535)
    for msg_id, sub_id in ((0x83, 0), (0x65, 0x02), (0xC3, 0), (0x00, 0)):
        for length in lengths:
            packet = frame(msg_id, sub_id, length) + bytes(4)
            for surplus in (1, 2, 3, 4, 5, 6, 7, 8):
                size = length + surplus
                if size > 6:
                    yield f"{msg_id:02X}{sub_id:02X} claims {length}, has {size}", [packet[:size]]


def identities():
    """All ids and all sub-ids; a packet that is not known costs its two start bytes."""
    for first in range(0, 256, 16):
        ids = range(first, first + 16)
        yield f"ids {first:02X} to {first + 15:02X}", [b"".join(frame(i, 0, 2) for i in ids)]
        yield (
            f"ids {first:02X} to {first + 15:02X}, bare",
            [b"".join(frame_around(bytes([i]), 1) for i in ids)],
        )
    for msg_id in range(0x61, 0x71):
        packets = [frame_around(bytes([msg_id, sub_id]), 2) for sub_id in range(256)]
        yield f"sub-ids of {msg_id:02X}", [b"".join(packets)]
    for msg_id in range(256):
        packet = frame_around(bytes([msg_id, 1]), 2)
        yield f"id {msg_id:02X} with second byte 01", [packet + b"\xA0"]


def mode_reports():
    """The last row of the catalogue in company: it counts as unknown whatever becomes of it."""
    report = frame(0xC3, 0, 3)
    bad = spoilt(report, 7)
    for size in range(len(report) + 1):
        yield f"packet and first {size}", [ACK + report[:size]]
        yield f"wrong checksum and first {size}", [bad + report[:size]]
        yield f"unknown id and first {size}", [frame(0x61, 0, 2) + report[:size]]
    for length in range(12):
        first = frame(0xC3, 0, length)
        yield f"length {length}", [first + report]
        yield f"length {length}, wrong checksum", [spoilt(first, 4 + length) + report]


def nested():
    """Packets inside packets: seen in unknown ones, hidden in known ones, good or bad."""
    outers = {"unknown": (0x61, 0), "known": (0x02, 0), "sub-id": (0x65, 1)}
    inners = {"ack": ACK, "query": QUERY, "report": frame(0xC3, 0, 3)}
    for outer_name, outer in outers.items():
        for inner_name, inner in inners.items():
            for gap in range(4):
                body = bytes(gap) + inner + bytes(3 - gap)
                ids = 2 if has_sub_id(outer[0]) else 1
                packet = frame(*outer, ids + len(body), body)
                name = f"{inner_name} in {outer_name} behind {gap}"
                yield name, [packet]
                yield name + ", wrong checksum", [spoilt(packet, len(packet) - 3) + ACK]
                yield name + ", claimed too long", [spoilt(packet, 2) + ACK]
                yield name + ", claimed too short", [spoilt(packet, 3, 0x08) + ACK]


def start_bytes():
    """All short runs of start bytes and filler before, between and behind packets."""
    symbols = (0xA0, 0xA1, 0x00)
    runs = [bytes(run) for size in range(5) for run in product(symbols, repeat=size)]
    runs += FALSE_STARTS
    for run in dict.fromkeys(runs):
        label = run.hex().upper() or "nothing"
        yield f"{label} before", [run + ACK]
        yield f"{label} between", [ACK + run + QUERY]
        yield f"{label} behind", [QUERY + run]


def single_bytes():
    """Packets with one byte replaced by each of the bytes that mean something to the scan."""
    values = sorted(set(DENSE_ALPHABET) | {0x0D, 0x0A, 0x61, 0x62, 0x6F, 0x70, 0x84, 0xFF})
    for label, packet in (("ack", ACK), ("query", QUERY), ("report", frame(0xC3, 0, 3))):
        for place in range(len(packet)):
            for value in values:
                changed = packet[:place] + bytes([value]) + packet[place + 1 :]
                yield f"{label} byte {place} is {value:02X}", [changed + ACK]


def repeated():
    """One builder over several buffers: counters add up and the newest message comes first."""
    generator = BufferGenerator(MUTATION_SEED + 1)
    for number in range(60):
        whole = generator.stream(60)
        cuts = sorted(generator.random.below(len(whole) + 1) for _ in range(3))
        yield f"growing {number}", [whole[:cut] for cut in cuts] + [whole, whole]
        yield f"pieces {number}", [whole[: cuts[0]], whole[cuts[0] : cuts[2]], whole[cuts[2] :]]


def mutated():
    generator = BufferGenerator(MUTATION_SEED)
    for number in range(900):
        yield f"mutated {number}", [generator.mutated(generator.stream(generator.random.below(80)))]


GROUPS = {
    "EdgeCases": edge_cases,
    "CatalogueGood": catalogue_good,
    "CatalogueSpoilt": catalogue_spoilt,
    "CatalogueCut": catalogue_cut,
    "Boundaries": boundaries,
    "ClaimedLengths": claimed_lengths,
    "Identities": identities,
    "ModeReports": mode_reports,
    "Nested": nested,
    "StartBytes": start_bytes,
    "SingleBytes": single_bytes,
    "Repeated": repeated,
    "Mutated": mutated,
}
