"""The format of explicit_vectors.tsv: one vector a line, fields separated by tabs.

group, name, buffers separated by ";", after each buffer the position and the five counters,
and the listed messages, newest first, as type form ":" payload length ":" packet.
Bytes are in hexadecimal, a longer run of one byte as "(5A*1000)", nothing at all as "-".
"""

import re

from edge_cases import EDGE_CASES
from explicit_vectors import GROUPS
from packet_assembler import MessageList, PacketAssembler
from transcript import update_line

SHORTEST_RUN = 8


def bytes_text(data):
    parts = re.split(rb"((.)\2{%d,})" % (SHORTEST_RUN - 1), data, flags=re.DOTALL)
    # Parts come in threes: bytes between runs, a run, the byte of the run.
    text = ""
    for place, part in enumerate(parts):
        if place % 3 == 0:
            text += part.hex()
        elif place % 3 == 1:
            text += f"({part[:1].hex()}*{len(part)})"
    return text.upper() or "-"


def outcome(updates):
    message_list = MessageList()
    assembler = PacketAssembler(message_list)
    results = [(assembler.update(buffer), assembler.counters()) for buffer in updates]
    return results, message_list.messages


def vector_line(group, name, updates):
    results, messages = outcome(updates)
    listed = [f"{m.type_form:04X}:{m.payload_length}:{bytes_text(m.packet)}" for m in messages]
    return "\t".join(
        (
            group,
            name,
            ";".join(bytes_text(buffer) for buffer in updates),
            ";".join(update_line(*result) for result in results),
            " ".join(listed) or "-",
        )
    )


def vector_lines():
    for group, vectors in GROUPS.items():
        for name, updates in vectors():
            yield vector_line(group, name, updates)


def edge_case_disagreements():
    """The hand-made cases where the model comes to another result than the one written there."""
    for name, updates, expected_results, expected_messages in EDGE_CASES:
        results, messages = outcome([bytes.fromhex(update) for update in updates])
        listed = [(m.type_form, m.payload_length, m.packet) for m in messages]
        expected = [(form, length, bytes.fromhex(text)) for form, length, text in expected_messages]
        if [(position, tuple(counters)) for position, counters in results] != expected_results:
            yield f"{name}: {results}"
        elif listed != expected:
            yield f"{name}: {listed}"
