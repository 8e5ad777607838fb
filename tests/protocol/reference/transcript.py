"""What the assembler makes of the random buffers, block by block, as text and as digests.

A block is a thousand buffers from a generator of its own, so any block can be replayed alone.
random_blocks.cpp writes the same text from the library under test.
"""

from buffer_generator import MASK, SEED, BufferGenerator
from packet_assembler import CATALOGUE, MessageList, PacketAssembler

BUFFERS_PER_BLOCK = 1000


class Fnv1a:
    """The FNV-1a hash of 64 bits."""

    def __init__(self):
        self.value = 0xCBF29CE484222325

    def add(self, data):
        value = self.value
        for byte in data:
            value = ((value ^ byte) * 0x100000001B3) & MASK
        self.value = value


def take_all(message_list, oldest_first):
    """Empties the list, by age or by type in the order of the catalogue."""
    if oldest_first:
        while message := message_list.take_oldest():
            yield message
    else:
        for row in CATALOGUE[:-1]:
            while message := message_list.take_newest_of(row.msg_id * 256 + row.sub_id):
                yield message


def update_line(position, counters):
    return " ".join(str(value) for value in (position, *counters))


def message_line(message):
    return f"{message.type_form:04X} {message.payload_length} {message.packet.hex().upper()}"


def play_block(block):
    """Yields (buffer, result lines) for each buffer of the block.

    One builder sees one or more buffers, now and then with its counters reset in between. After
    the last one its list is emptied and written down.
    """
    generator = BufferGenerator(SEED + block)
    random = generator.random
    message_list = MessageList()
    assembler = PacketAssembler(message_list)
    for number in range(BUFFERS_PER_BLOCK):
        buffer = generator.next_buffer()
        random.below(256)  # the id of the awaited reply, which must not matter
        lines = [update_line(assembler.update(buffer), assembler.counters())]
        fate = random.below(8)
        if fate < 6 or number == BUFFERS_PER_BLOCK - 1:
            lines += [message_line(message) for message in take_all(message_list, fate % 2 == 0)]
            assembler = PacketAssembler(message_list)
        elif fate == 7:
            assembler.reset_counters()
        yield buffer, lines


def digest_line(block):
    """One line of block_digests.tsv."""
    buffers = Fnv1a()
    results = Fnv1a()
    messages = 0
    for buffer, lines in play_block(block):
        buffers.add(len(buffer).to_bytes(4, "big") + buffer)
        results.add("".join(line + "\n" for line in lines).encode("ascii"))
        messages += len(lines) - 1
    return f"{block}\t{buffers.value:016X}\t{results.value:016X}\t{messages}"


def transcript_lines(block):
    """The block for reading: each buffer, then its result lines indented."""
    for number, (buffer, lines) in enumerate(play_block(block)):
        yield f"{block}.{number} {buffer.hex().upper()}"
        for line in lines:
            yield "  " + line
