"""An I2C port expander at 0x21, on a USB I2C adapter that the emulated machine sees.

The adapter is the plainest that Linux has a driver for (i2c-tiny-usb): each message on the bus is a
control request, which says whether it starts and whether it ends a transfer. The emulator passes
USB requests on over a socket (usbredir).
"""

import socket
import struct
import threading

ADDRESS = 0x21
REGISTERS = 8

# Message types of usbredir.
HELLO, CONNECT, DISCONNECT, RESET, INTERFACES, ENDPOINTS = range(6)
SET_CONFIGURATION, GET_CONFIGURATION, CONFIGURATION_STATUS = 6, 7, 8
SET_INTERFACE, GET_INTERFACE, INTERFACE_STATUS = 9, 10, 11
CONTROL = 100
STALL = 4

FULL_SPEED = 1
VENDOR, PRODUCT = 0x1C40, 0x0534

# Requests of the adapter.
GET_FUNCTIONS, SET_DELAY, GET_STATUS, TRANSFER = 1, 2, 3, 4
BEGINS, ENDS = 1, 2
READ = 1  # in a message's flags

# What the emulator asks of a device on a USB 3 controller: packet sizes, numbers of 64 bits, long
# bulk transfers.
CAPABILITIES = 1 << 4 | 1 << 5 | 1 << 6

PLAIN_I2C = 0x00000001
SMBUS = 0x0EFF0008

DEVICE = struct.pack("<BBHBBBBHHHBBBB", 18, 1, 0x0110, 0xFF, 0, 0, 8, VENDOR, PRODUCT, 0x0205,
                     0, 0, 0, 1)
CONFIGURATION = (struct.pack("<BBHBBBBB", 9, 2, 18, 1, 1, 0, 0x80, 50) +
                 struct.pack("<BBBBBBBBB", 9, 4, 0, 0, 0, 0xFF, 0, 0, 0))


class PortExpander:
    """Listens on `path`, for the emulator, with an adapter that says it has these `functions`."""

    def __init__(self, path, functions):
        self.functions = functions
        self.registers = [0xFF] * REGISTERS  # as after power-on
        self.is_mute = False
        self.transfers = []  # as texts, such as "w 02 r 2"
        self._pointer = 0
        self._current = []
        self._acknowledged = True
        listener = socket.socket(socket.AF_UNIX)
        listener.bind(path)
        listener.listen(1)
        threading.Thread(target=self._serve, args=(listener,), daemon=True).start()

    def _serve(self, listener):
        self._line = listener.accept()[0]
        hello = b"port expander".ljust(64, b"\0") + struct.pack("<I", CAPABILITIES)
        self._line.sendall(struct.pack("<III", HELLO, len(hello), 0) + hello)
        try:
            self._receive(struct.unpack("<III", self._receive(12))[1])  # the emulator's hello
            self._introduce()
            while True:
                kind, length, number = struct.unpack("<IIQ", self._receive(16))
                self._handle(kind, number, self._receive(length))
        except (EOFError, OSError):
            pass

    def _receive(self, size):
        data = b""
        while len(data) < size:
            more = self._line.recv(size - len(data))
            if not more:
                raise EOFError
            data += more
        return data

    def _send(self, kind, number, data):
        self._line.sendall(struct.pack("<IIQ", kind, len(data), number) + data)

    def _introduce(self):
        self._send(INTERFACES, 0, struct.pack("<I", 1) + bytes(32) + b"\xff".ljust(32, b"\0") +
                   bytes(64))
        types, sizes = [255] * 32, [0] * 32
        for control in (0, 16):
            types[control], sizes[control] = 0, 8
        self._send(ENDPOINTS, 0, struct.pack("<32B64x32H", *types, *sizes))
        self._send(CONNECT, 0, struct.pack("<BBBBHH", FULL_SPEED, 0xFF, 0, 0, VENDOR, PRODUCT))

    def _handle(self, kind, number, data):
        if kind in (SET_CONFIGURATION, GET_CONFIGURATION):
            self._send(CONFIGURATION_STATUS, number, bytes([0, 1]))
        elif kind in (SET_INTERFACE, GET_INTERFACE):
            self._send(INTERFACE_STATUS, number, bytes([0, 0, 0]))
        elif kind == CONTROL:
            self._control(number, *struct.unpack("<BBBBHHH", data[:10]), data[10:])

    def _control(self, number, endpoint, request, request_type, _, value, index, length, data):
        is_of_adapter = request_type & 0x60
        answer = (self._request(request, value, index, length, data) if is_of_adapter
                  else self._descriptor(request, value))
        status = STALL if answer is None else 0
        answer = (answer or b"")[:length]
        size = len(answer) if request_type & 0x80 else length
        self._send(CONTROL, number, struct.pack("<BBBBHHH", endpoint, request, request_type, status,
                                                value, index, size) + answer)

    @staticmethod
    def _descriptor(request, value):
        texts = {0: struct.pack("<BBH", 4, 3, 0x0409),
                 1: struct.pack("<BB", 14, 3) + "tester".encode("utf-16-le")}
        if request == 6:  # GET_DESCRIPTOR
            return {1: DEVICE, 2: CONFIGURATION, 3: texts.get(value & 0xFF)}.get(value >> 8)
        return b"\0\0" if request == 0 else None  # GET_STATUS

    def _request(self, request, flags, address, length, data):
        if request == GET_FUNCTIONS:
            return struct.pack("<I", self.functions)
        if request == GET_STATUS:
            return bytes([1 if self._acknowledged else 2])
        if request & TRANSFER:
            return self._message(request, flags, address, length, data)
        return b""

    def _message(self, request, flags, address, length, data):
        if request & BEGINS:
            self._current = []
        self._acknowledged = address == ADDRESS and not self.is_mute
        if flags & READ:
            self._current.append(f"r {length}")
        else:
            self._current.append(f"w {data.hex(' ')}")
        if request & ENDS or not self._acknowledged:
            self.transfers.append(" ".join(self._current) + ("" if self._acknowledged else " nak"))
        if not self._acknowledged:
            return bytes(length) if flags & READ else b""
        if flags & READ:
            return bytes(self.registers[self._next(i)] for i in range(length))
        if data:
            self._pointer = data[0] % REGISTERS
            for i, byte in enumerate(data[1:]):
                self.registers[self._next(i)] = byte
        return b""

    def _next(self, count):
        """The registers are pairs, and a transfer stays within its pair."""
        return self._pointer ^ (count & 1)
