"""Uses the board's I2C bus through the preloaded library, from programs of many kinds."""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

LIBRARY = pathlib.Path(os.environ["ORB_SIM_PRELOAD"])
PROGRAMS = pathlib.Path(os.environ["ORB_SIM_TEST_PROGRAMS"])
LIMIT = 60  # seconds for one program

# Nothing is there, so that whatever succeeds has been mapped.
DEVICE = "/nonexistent-orb-sim/i2c-3"

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
PYTHON = f"""
import errno, fcntl, os, subprocess, sys, threading
PATH, I2C_SLAVE = {DEVICE!r}, 0x0703

def opened(address=0x21):
    bus = os.open(PATH, os.O_RDWR)
    fcntl.ioctl(bus, I2C_SLAVE, address)
    return bus

def pair(bus, register):
    os.write(bus, bytes([register]))
    return os.read(bus, 2)

def error_of(call, *arguments):
    try:
        call(*arguments)
    except OSError as error:
        return errno.errorcode[error.errno]
    return "none"
"""


class I2cDeviceTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="i2c device.")
        self.addCleanup(folder.cleanup)
        self.registers = pathlib.Path(folder.name) / "registers.txt"
        self.registers.write_text(FACTORY_TEXT)
        bus = pathlib.Path(folder.name) / "bus"
        bus.symlink_to(self.registers)
        self.environment = os.environ | {
            "LD_PRELOAD": str(LIBRARY), "ORB_SIM_PATHS": f"{DEVICE}={bus}", "ORB_SIM_I2C": str(bus)}

    def run_program(self, *command):
        """Runs a program that must succeed silently; returns its output."""
        result = subprocess.run([str(part) for part in command], env=self.environment,
                                capture_output=True, text=True, timeout=LIMIT)
        self.assertEqual((result.returncode, result.stderr), (0, ""), result.stdout)
        return result.stdout

    def run_python(self, code):
        return self.run_program(sys.executable, "-c", PYTHON + code)

    def register(self, name):
        """Both ports' values of a pair of registers, as their file shows them."""
        lines = self.registers.read_text().splitlines()
        return next(line.split()[-2:] for line in lines if name in line)


class CProgram(I2cDeviceTest):
    def test_finds_every_way_to_use_the_bus(self):
        self.run_program(PROGRAMS / "i2c_calls", DEVICE)
        self.assertEqual(self.register("output"), ["12", "34"])

    def test_finds_every_way_to_use_the_bus_when_it_is_sanitized(self):
        sanitized = sorted(PROGRAMS.glob("i2c_calls_asan_*[+]"))
        self.assertTrue(sanitized)
        for program in sanitized:
            with self.subTest(program):
                # The shell's child gets the runtime in front of the library.
                self.run_program("sh", "-c", '"$@"; exit $?', "sh", program, DEVICE)

    def test_fails_without_the_library(self):
        result = subprocess.run([PROGRAMS / "i2c_calls", DEVICE], capture_output=True, text=True,
                                timeout=LIMIT)
        self.assertEqual(result.returncode, 1)
        self.assertIn("open: No such file or directory\n", result.stderr)


class Python(I2cDeviceTest):
    def test_reads_and_writes_registers(self):
        self.assertEqual(self.run_python("""
bus = opened()
os.write(bus, bytes([6, 0xFF, 0xFE]))
print(pair(bus, 6).hex(), pair(bus, 2).hex(), os.read(bus, 4).hex())
"""), "fffe ffff ffffffff\n")
        self.assertEqual(self.register("direction"), ["ff", "fe"])

    def test_finds_the_expander_alone_by_a_scan(self):
        self.assertEqual(self.run_python("""
print([address for address in range(3, 0x78) if error_of(os.read, opened(address), 1) == "none"])
"""), "[33]\n")

    def test_opens_it_as_an_unbuffered_file(self):
        self.assertEqual(self.run_python("""
with open(PATH, "r+b", buffering=0) as bus:
    fcntl.ioctl(bus, I2C_SLAVE, 0x21)
    bus.write(bytes([2, 0x12]))
    print(pair(bus.fileno(), 2).hex())
"""), "12ff\n")


class SharedBus(I2cDeviceTest):
    def test_keeps_its_registers_from_one_program_to_the_next(self):
        self.run_python("os.write(opened(), bytes([2, 0x12, 0x34]))")
        self.assertEqual(self.run_python("print(pair(opened(), 2).hex())"), "1234\n")

    def test_keeps_the_address_across_exec(self):
        self.assertEqual(self.run_python("""
bus = opened()
os.set_inheritable(bus, True)
os.write(bus, bytes([2, 0x12, 0x34, 0x12]))
code = f"import os; os.write({bus}, bytes([2])); print(os.read({bus}, 2).hex())"
os.execv(sys.executable, [sys.executable, "-c", code])
"""), "1234\n")

    def test_keeps_the_address_for_a_program_that_is_handed_the_descriptor(self):
        self.assertEqual(self.run_python("""
import socket
ours, theirs = socket.socketpair()
if os.fork() == 0:
    bus = socket.recv_fds(theirs, 1, 1)[1][0]
    print(pair(bus, 6).hex(), flush=True)
    os._exit(0)
socket.send_fds(ours, [b"x"], [opened()])
os.wait()
"""), "ffff\n")

    def test_is_used_by_several_threads(self):
        self.assertEqual(self.run_python("""
def use_bus():
    bus = opened()
    for _ in range(200): pair(bus, 2)
threads = [threading.Thread(target=use_bus) for _ in range(4)]
for thread in threads: thread.start()
for thread in threads: thread.join()
print("done")
"""), "done\n")


class RegisterFile(I2cDeviceTest):
    def test_can_be_read_by_its_own_name_meanwhile(self):
        self.assertEqual(self.run_program("cat", self.registers), FACTORY_TEXT)

    def test_fails_transfers_where_it_is_damaged(self):
        self.registers.write_text(FACTORY_TEXT.replace("ff", "fx"))
        self.assertEqual(self.run_python("print(error_of(os.write, opened(), bytes([2])))"), "EIO\n")

    def test_fails_what_follows_where_it_is_removed(self):
        self.assertEqual(self.run_python(f"""
bus = opened()
os.remove({str(self.registers)!r})
print(error_of(os.write, bus, bytes([2])), error_of(opened))
"""), "ENOENT ENOENT\n")


class Shell(I2cDeviceTest):
    def test_finds_a_character_device(self):
        self.run_program("sh", "-c", f"test -c {DEVICE} -a -r {DEVICE} -a -w {DEVICE}")
        self.assertRegex(self.run_program("ls", "-l", DEVICE), r"^crw------- .* 89, +3 .*i2c-3\n$")

    def test_covers_a_child_with_an_empty_environment(self):
        self.run_program("env", "-i", PROGRAMS / "i2c_calls", DEVICE)

    def test_leaves_other_sockets_that_are_not_connected_alone(self):
        self.assertEqual(self.run_python("""
import socket
plain = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
print(error_of(os.read, plain.fileno(), 1), error_of(os.write, plain.fileno(), b"x"),
      error_of(fcntl.ioctl, plain.fileno(), I2C_SLAVE, 0x21))
"""), "ENOTCONN ENOTCONN ENOTTY\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
