"""Buffers whose outcome was worked out by hand. The model has to agree before anything is written.

Each case: name, the buffers handed to one builder in turn, for each the position and the counters
(good, errored, unknown, acknowledged, refused), and the listed messages, newest first, as
(type form, payload length, packet).
"""

ACK = "A0A1 0002 8301 82 0D0A"
NAK = "A0A1 0002 8401 85 0D0A"
PULSE_WIDTH_QUERY = "A0A1 0002 6502 67 0D0A"
MODE_REPORT = "A0A1 0003 C30102 C0 0D0A"

LISTED_ACK = (0x8300, 2, ACK)
LISTED_NAK = (0x8400, 2, NAK)
LISTED_QUERY = (0x6502, 2, PULSE_WIDTH_QUERY)
LISTED_REPORT = (0xC300, 3, MODE_REPORT)

NOTHING = (0, 0, 0, 0, 0)

EDGE_CASES = [
    # Too short for a packet.
    ("empty", [""], [(0, NOTHING)], []),
    ("one byte", ["A0"], [(0, NOTHING)], []),
    ("two start bytes", ["A0A1"], [(0, NOTHING)], []),
    ("header of six bytes", ["A0A1 0002 8301"], [(0, NOTHING)], []),
    # One packet.
    ("acknowledgement", [ACK], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("refusal", [NAK], [(0, (1, 0, 0, 0, 1))], [LISTED_NAK]),
    ("with sub-id", [PULSE_WIDTH_QUERY], [(0, (1, 0, 0, 0, 0))], [LISTED_QUERY]),
    ("without its last byte", ["A0A1 0002 8301 82 0D"], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("without its end bytes", ["A0A1 0002 8301 82"], [(0, NOTHING)], []),
    ("with sub-id without its last byte", ["A0A1 0002 6502 67 0D"], [(0, (1, 0, 0, 0, 0))],
     [LISTED_QUERY]),
    # The end bytes are neither checked nor kept.
    ("wrong end bytes", ["A0A1 0002 8301 82 1234"], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("wrong end bytes with sub-id", ["A0A1 0002 6502 67 1234"], [(0, (1, 0, 0, 0, 0))],
     [LISTED_QUERY]),
    # What follows a packet decides the position.
    ("start bytes behind", [ACK + "A0A1"], [(8, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("start bytes behind sub-id", [PULSE_WIDTH_QUERY + "A0A1"], [(9, (1, 0, 0, 0, 0))],
     [LISTED_QUERY]),
    ("one byte behind", [ACK + "55"], [(8, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("one byte behind sub-id", [PULSE_WIDTH_QUERY + "55"], [(0, (1, 0, 0, 0, 0))], [LISTED_QUERY]),
    ("two packets", [ACK + NAK], [(0, (2, 0, 0, 1, 1))], [LISTED_NAK, LISTED_ACK]),
    ("packet and incomplete packet", [ACK + "A0A1 0002 8401 85"], [(8, (1, 0, 0, 1, 0))],
     [LISTED_ACK]),
    ("incomplete packet hides the next", ["A0A1 0020 8301 82 0D0A" + ACK], [(0, NOTHING)], []),
    # Checksum.
    ("wrong checksum", ["A0A1 0002 8301 83 0D0A"], [(7, (0, 1, 0, 0, 0))], []),
    ("wrong checksum and two bytes", ["A0A1 0002 8301 83 0D0A A0"], [(7, (0, 1, 0, 0, 0))], []),
    ("wrong checksum hides what it claims", ["A0A1 000B 8301" + ACK + "00 0D0A"],
     [(16, (0, 1, 0, 0, 0))], []),
    ("scan goes on at the end bytes", ["A0A1 0002 8301 83" + ACK], [(0, (1, 1, 0, 1, 0))],
     [LISTED_ACK]),
    # Ids that are not in the catalogue.
    ("unknown id", ["A0A1 0002 6101 60 0D0A"], [(0, (0, 0, 1, 0, 0))], []),
    ("unknown sub-id", ["A0A1 0002 65FF 9A 0D0A"], [(0, (0, 0, 1, 0, 0))], []),
    ("end marker", ["A0A1 0002 FFFF 00 0D0A"], [(0, (0, 0, 1, 0, 0))], []),
    ("packet inside an unknown one", ["A0A1 000B 6101" + ACK + "00 0D0A"],
     [(14, (1, 0, 1, 1, 0))], [LISTED_ACK]),
    ("unknown id needs seven bytes only", ["A0A1 FFFF 6101 60"], [(0, (0, 0, 1, 0, 0))], []),
    # The 1PPS output mode report counts as unknown besides, in every outcome.
    ("mode report", [MODE_REPORT], [(0, (1, 0, 1, 0, 0))], [LISTED_REPORT]),
    ("mode report with wrong checksum", ["A0A1 0003 C30102 C1 0D0A"], [(8, (0, 1, 1, 0, 0))], []),
    ("mode report without end bytes", ["A0A1 0003 C30102 C0"], [(0, (0, 0, 1, 0, 0))], []),
    ("mode report without checksum", ["A0A1 0003 C30102"], [(0, (0, 0, 1, 0, 0))], []),
    ("mode report of six bytes", ["A0A1 0003 C301"], [(0, NOTHING)], []),
    # Start bytes.
    ("lone first start byte hides the next byte", ["A0" + ACK], [(0, NOTHING)], []),
    ("two lone first start bytes", ["A0A0" + ACK], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("lone first start byte and filler", ["A000" + ACK], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    ("second start byte alone", ["A1" + ACK], [(0, (1, 0, 0, 1, 0))], [LISTED_ACK]),
    # The catalogue's lengths do not matter, the claimed one does.
    ("length beyond the catalogue", ["A0A1 0004 83010203 83 0D0A"], [(0, (1, 0, 0, 1, 0))],
     [(0x8300, 4, "A0A1 0004 83010203 83 0D0A")]),
    ("length one", ["A0A1 0001 83 83 0D0A"], [(0, (1, 0, 0, 1, 0))],
     [(0x8300, 1, "A0A1 0001 83 83 0D0A")]),
    ("length zero, id zero", ["A0A1 0000 00 0D0A"], [(0, (1, 0, 0, 0, 0))],
     [(0x0000, 0, "A0A1 0000 00 0D0A")]),
    ("length zero, id zero, eight bytes", ["A0A1 0000 00 0D0A A0"], [(6, (1, 0, 0, 0, 0))],
     [(0x0000, 0, "A0A1 0000 00 0D0A")]),
    ("length zero, other id", ["A0A1 0000 83 00 0D0A"], [(5, (0, 1, 0, 0, 0))], []),
    ("length zero with sub-id", ["A0A1 0000 6502 0D0A"], [(5, (0, 1, 0, 0, 0))], []),
    ("length one with sub-id", ["A0A1 0001 6502 65 0D0A"], [(6, (0, 1, 0, 0, 0))], []),
    # Several updates.
    ("the same packet twice", [ACK, ACK], [(0, (1, 0, 0, 1, 0)), (0, (2, 0, 0, 2, 0))],
     [LISTED_ACK, LISTED_ACK]),
    ("growing buffer", [ACK, ACK + "A0A1 0002", ACK + NAK],
     [(0, (1, 0, 0, 1, 0)), (8, (2, 0, 0, 2, 0)), (0, (4, 0, 0, 3, 1))],
     [LISTED_NAK, LISTED_ACK, LISTED_ACK, LISTED_ACK]),
    ("no state between updates", ["A0A1 0002 83", "01 82 0D0A"], [(0, NOTHING), (0, NOTHING)], []),
]
