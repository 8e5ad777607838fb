"""Deterministic random receive buffers. buffer_generator.cpp draws the same ones.

Every draw is part of the definition: change one, in both files, and all digests change.
"""

from packet_assembler import CATALOGUE, END_1, END_2, START_1, START_2, checksum, has_sub_id

SEED = 0x6F72622D676E7373
LONGEST_TARGET = 300
MASK = 0xFFFFFFFFFFFFFFFF

KNOWN = CATALOGUE[:-1]
DENSE_ALPHABET = bytes.fromhex("A0A0A0A0A1A1A100000001010283C310")
FALSE_STARTS = [
    bytes.fromhex(text)
    for text in ("A0", "A0A0A1", "A0A1", "A0A0", "A1", "A0A1A0A1", "0D0A", "A00D0A")
]


class Random:
    """The splitmix64 generator."""

    def __init__(self, seed):
        self.state = seed

    def next(self):
        self.state = (self.state + 0x9E3779B97F4A7C15) & MASK
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & MASK
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & MASK
        return z ^ (z >> 31)

    def below(self, bound):
        return (self.next() >> 32) % bound

    def bytes(self, count):
        """Eight bytes a number, lowest first; the surplus of the last number is dropped."""
        data = b"".join(self.next().to_bytes(8, "little") for _ in range((count + 7) // 8))
        return data[:count]


class BufferGenerator:
    def __init__(self, seed):
        self.random = Random(seed)
        self.previous = b""

    def next_buffer(self):
        kind = self.random.below(16)
        if kind == 0:
            buffer = self.random.bytes(self.random.below(LONGEST_TARGET + 1))
        elif kind == 1:
            draws = self.random.bytes(self.random.below(LONGEST_TARGET + 1))
            buffer = bytes(DENSE_ALPHABET[draw % 16] for draw in draws)
        elif kind == 2 and len(self.previous) <= LONGEST_TARGET:
            buffer = self.previous + self.stream(self.random.below(61))
        elif kind == 3:
            buffer = self.previous
        elif kind < 8:
            buffer = self.stream(self.random.below(LONGEST_TARGET + 1))
        else:
            buffer = self.mutated(self.stream(self.random.below(LONGEST_TARGET + 1)))
        self.previous = buffer
        return buffer

    def stream(self, target):
        """Pieces until there are at least `target` bytes."""
        buffer = b""
        while len(buffer) < target:
            buffer += self.piece()
        return buffer

    def piece(self):
        kind = self.random.below(16)
        if kind < 6:
            return self.good_frame()
        if kind == 6:
            row = KNOWN[self.random.below(len(KNOWN))]
            return self.frame(row.msg_id, row.sub_id, self.random.below(24))
        if kind == 7:
            frame = bytearray(self.good_frame())
            frame[-3] ^= 1 + self.random.below(255)
            return bytes(frame)
        if kind == 8:
            return self.frame(0x83 + self.random.below(2), 0, 2)
        if kind == 9:
            return self.frame(0xC3, 0, 3)
        if kind == 10:
            frame = self.good_frame()
            return frame[: self.random.below(len(frame) + 1)]
        if kind == 11:
            return self.unknown_frame()
        if kind == 12:
            return FALSE_STARTS[self.random.below(8)]
        if kind == 13:
            return self.random.bytes(self.random.below(12))
        if kind == 14:
            frame = self.good_frame()
            return frame[:-2] + self.random.bytes(2)
        row = KNOWN[self.random.below(len(KNOWN))]
        claimed = self.random.below(512)
        return bytes([START_1, START_2, claimed >> 8, claimed & 0xFF, row.msg_id, row.sub_id])

    def good_frame(self):
        row = KNOWN[self.random.below(len(KNOWN))]
        length = row.min_length + self.random.below(row.max_length - row.min_length + 1)
        return self.frame(row.msg_id, row.sub_id, length)

    def unknown_frame(self):
        """A frame of any id, mostly not in the catalogue, around a good frame."""
        ids = self.random.bytes(2)
        inner = self.good_frame()
        payload = ids + inner
        return frame_around(payload, len(payload))

    def frame(self, msg_id, sub_id, length):
        """A frame that claims `length`; it has its id bytes even where the length is too small."""
        ids = bytes([msg_id, sub_id]) if has_sub_id(msg_id) else bytes([msg_id])
        body = self.random.bytes(max(length - len(ids), 0))
        return frame_around(ids + body, length)

    def mutated(self, buffer):
        data = bytearray(buffer)
        for _ in range(1 + self.random.below(4)):
            if not data:
                break
            self.mutate(data)
        return bytes(data)

    def mutate(self, data):
        kind = self.random.below(8)
        place = self.random.below(len(data))
        if kind == 0:
            data[place] ^= 1 << self.random.below(8)
        elif kind == 1:
            data[place] = self.random.below(256)
        elif kind == 2:
            data.insert(place, self.random.below(256))
        elif kind == 3:
            del data[place : place + 1 + self.random.below(4)]
        elif kind == 4:
            del data[place:]
        elif kind == 5:
            repeated = data[place : place + 1 + self.random.below(16)]
            target = self.random.below(len(data) + 1)
            data[target:target] = repeated
        elif kind == 6:
            data[place] = START_1 + self.random.below(2)
        else:
            del data[:place]


def frame_around(payload, length):
    """The payload as it stands, framed with the claimed length and the checksum over that many."""
    header = bytes([START_1, START_2, length >> 8, length & 0xFF])
    return header + payload + bytes([checksum(payload[:length]), END_1, END_2])
