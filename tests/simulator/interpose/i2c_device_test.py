"""Uses the board's I2C bus through the preloaded library, by the programs that people use."""

import os
import re
import stat
import unittest

from held_program import HeldProgramTest, PROGRAMS, SANITIZED, escaped

DEVICE = "/dev/i2c-77"  # as the tools make it of their bus number, and none of the real ones

FACTORY_TEXT = """\
port expander at 0x21   port 0   port 1
0 1  input                  ff       ff
2 3  output                 ff       ff
4 5  polarity               00       00
6 7  direction              ff       ff
next register                         0
antenna supply               not driven
"""

# What every Python program below begins with.
PYTHON = """
import errno, fcntl, os, smbus
bus = smbus.SMBus(77)

def error_of(call, *arguments):
    try:
        call(*arguments)
    except OSError as error:
        return errno.errorcode[error.errno]
    return "none"
"""


class I2cDeviceTest(HeldProgramTest):
    def setUp(self):
        super().setUp()
        self.registers = self.folder / "registers.txt"
        self.registers.write_text(FACTORY_TEXT)
        (self.folder / "bus.registers").symlink_to(self.registers)
        bus = self.folder / "bus"
        os.mknod(bus, stat.S_IFSOCK | 0o600)
        self.environment |= {
            "ORB_SIM_PATHS": f"{DEVICE}={escaped(bus)}", "ORB_SIM_I2C": str(bus),
            "PATH": os.environ["PATH"] + ":/usr/sbin"}

    def run_python(self, code):
        return self.run_program("/usr/bin/python3", "-c", PYTHON + code)

    def check_register(self, name, *values):
        """Both ports' values of a pair of registers, as their file shows them."""
        lines = self.registers.read_text().splitlines()
        self.assertEqual(next(line.split()[-2:] for line in lines if name in line), list(values))


class CProgram(I2cDeviceTest):
    def check_every_way(self, *command):
        self.run_program(*command)
        self.check_register("output", "12", "34")

    def test_finds_every_way_to_use_the_bus(self):
        self.check_every_way(PROGRAMS / "i2c_calls", DEVICE)

    def test_finds_every_way_to_use_the_bus_with_an_empty_environment(self):
        self.check_every_way("env", "-i", PROGRAMS / "i2c_calls", DEVICE)

    def test_finds_every_way_to_use_the_bus_when_it_is_sanitized(self):
        for kind in SANITIZED:
            with self.subTest(kind):
                # The shell's child gets the runtime before the library.
                self.check_every_way(
                    "sh", "-c", '"$@"; exit $?', "sh", f"{PROGRAMS}/i2c_calls{kind}", DEVICE)

    def test_fails_without_the_library(self):
        self.check_fails_without_the_library(PROGRAMS / "i2c_calls", DEVICE)


class I2cTools(I2cDeviceTest):
    def tool(self, name, *arguments, **expected):
        return self.run_program(f"i2c{name}", "-y", "77", *arguments, **expected).split()

    def test_finds_the_expander_alone(self):
        for modes in ("-y",), ("-y", "-q"), ("-y", "-r"):
            with self.subTest(modes):
                cells = self.run_program("i2cdetect", *modes, "77").split()
                self.assertEqual([cell for cell in cells if re.fullmatch("[0-9a-f]{2}", cell)],
                                 ["21"])

    def test_sets_and_gets_registers(self):
        for arguments, output in (
                (("0x03", "0x56"), ["ff", "56"]), (("0x02", "0x3412", "w"), ["12", "34"]),
                (("0x02", "0x78", "0x9a", "i"), ["78", "9a"]), (("0x02", "0xbc", "s"), ["01", "bc"])):
            with self.subTest(arguments):
                self.tool("set", "0x21", *arguments)
                self.check_register("output", *output)
        self.assertEqual(self.tool("get", "0x21", "0x03"), ["0xbc"])
        self.assertEqual(self.tool("get", "0x21", "0x02", "w"), ["0xbc01"])
        self.assertEqual(self.tool("get", "0x21", "0x02", "i", "3"), ["0x01", "0xbc", "0x01"])
        self.tool("set", "0x21", "0x03")
        self.assertEqual(self.tool("get", "0x21"), ["0xbc"])
        self.tool("get", "0x20", "0x02", status=2, error="Error: Read failed\n")

    def test_transfers_messages(self):
        self.assertEqual(self.tool("transfer", "w3@0x21", "2", "0x12", "0x34"), [])
        self.assertEqual(self.tool("transfer", "w1@0x21", "2", "r2"), ["0x12", "0x34"])
        self.tool("transfer", "w1@0x22", "2", status=1,
                  error="Error: Sending messages failed: No such device or address\n")


class PythonSmbus(I2cDeviceTest):
    def test_writes_and_reads(self):
        self.assertEqual(self.run_python("""
bus.write_word_data(0x21, 2, 0x3412)
bus.write_i2c_block_data(0x21, 6, [0x56, 0x78])
print(bus.read_byte_data(0x21, 7), bus.read_word_data(0x21, 2))
bus.write_block_data(0x21, 2, [0x9A])
"""), "120 13330\n")
        self.check_register("output", "01", "9a")

    def test_fails_where_nobody_is_and_where_the_adapter_cannot(self):
        self.assertEqual(self.run_python("""
print(error_of(bus.write_quick, 0x20), error_of(bus.read_byte_data, 0x20, 2),
      error_of(bus.read_block_data, 0x21, 2), error_of(bus.block_process_call, 0x21, 2, [1]),
      error_of(setattr, bus, "pec", True))
"""), "ENXIO ENXIO ENOTSUP ENOTSUP ENOTSUP\n")


class Device(I2cDeviceTest):
    def test_can_be_seen_and_accessed(self):
        self.run_program("sh", "-c", f"test -e {DEVICE} -a -r {DEVICE} -a -w {DEVICE}")

    def test_keeps_the_address_for_a_program_that_is_handed_the_descriptor(self):
        self.run_python(f"""
I2C_SLAVE = 0x703
bus.write_word_data(0x21, 2, 0x3412)
descriptor = os.open({DEVICE!r}, os.O_RDWR)
fcntl.ioctl(descriptor, I2C_SLAVE, 0x21)
os.set_inheritable(descriptor, True)
os.execv("{PROGRAMS}/i2c_calls", ["i2c_calls", {DEVICE!r}, str(descriptor)])
""")


class RegisterFile(I2cDeviceTest):
    def test_can_be_read_by_its_own_name_meanwhile(self):
        self.assertEqual(self.run_program("cat", self.registers), FACTORY_TEXT)

    def test_fails_transfers_where_it_is_damaged(self):
        damaged = FACTORY_TEXT.replace("ff", "fx")
        self.registers.write_text(damaged)
        self.assertEqual(self.run_python("print(error_of(bus.write_byte, 0x21, 2))"), "EIO\n")
        self.assertEqual(self.registers.read_text(), damaged)

    def test_fails_what_follows_where_it_is_removed(self):
        self.assertEqual(self.run_python(f"""
os.remove({str(self.registers)!r})
print(error_of(bus.write_byte, 0x21, 2))
"""), "ENOENT\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
