#!/usr/bin/env python3
"""Boots the target's kernel in an emulator, and judges what the checks on it report.

usage: run.py ORB_SIM FOLDER [CHECKS]

FOLDER holds vmlinuz and root.cpio (make_root.sh). Each receiver that the machine's serial ports
lead to is an `orb-sim serve` of this machine. The checks ask for what is done from outside (plug,
unplug, mute) on the console, which is kept in FOLDER/console.log. CHECKS, a regular expression,
chooses those that are run.
"""

import json
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

import port_expander

HERE = os.path.dirname(os.path.abspath(__file__))
LIMIT = int(os.environ.get("ORB_TARGET_LIMIT", "900"))  # seconds
RECEIVERS = {"board": "line", "uart": "line", "usb": "line", "split": "split", "late": "late"}


class Machine:
    """The emulator, with its receivers and its I2C buses."""

    def __init__(self, orb_sim, folder, work, chosen):
        self.processes = []
        self.work = work
        self.messages = open(f"{folder}/receivers.log", "w", encoding="utf-8")
        for name, scenario in RECEIVERS.items():
            self._start([orb_sim, "serve", "--link", f"{work}/{name}", "--scenario",
                         f"{HERE}/{scenario}.toml"], stderr=self.messages)
        self.buses = {
            "plain": port_expander.PortExpander(f"{work}/plain.socket",
                                                port_expander.PLAIN_I2C | port_expander.SMBUS),
            "smbus": port_expander.PortExpander(f"{work}/smbus.socket", port_expander.SMBUS)}
        wait_for([f"{work}/{name}" for name in RECEIVERS])
        self.emulator = self._start(self._command(folder, chosen), stdout=subprocess.PIPE,
                                    stdin=subprocess.DEVNULL)
        self._monitor = None
        threading.Thread(target=self._stop_in_time, daemon=True).start()

    def _command(self, folder, chosen):
        command = ["qemu-system-aarch64", "-M", "virt", "-cpu", "cortex-a53", "-m", "1024",
                   "-nic", "none", "-display", "none", "-no-reboot",
                   "-kernel", f"{folder}/vmlinuz", "-initrd", f"{folder}/root.cpio",
                   "-append", "console=ttyS0 quiet systemd.show_status=0 "
                   f"systemd.default_timeout_start_sec={LIMIT} checks={chosen}",
                   "-qmp", f"unix:{self.work}/monitor,server=on,wait=off",
                   "-chardev", "stdio,id=console,signal=off"]
        for name in RECEIVERS:
            port = os.path.realpath(f"{self.work}/{name}")
            command += ["-chardev", f"serial,id={name},path={port}"]
        for name in self.buses:
            command += ["-chardev", f"socket,id={name},path={self.work}/{name}.socket"]
        return command + [
            "-serial", "chardev:board", "-device", "pci-serial-2x,chardev1=console,chardev2=uart",
            "-device", "qemu-xhci,id=usb"]

    def _start(self, command, **options):
        self.processes.append(subprocess.Popen(command, **options))
        return self.processes[-1]

    def _stop_in_time(self):
        try:
            self.emulator.wait(LIMIT)
        except subprocess.TimeoutExpired:
            self.emulator.kill()

    def stop(self):
        for process in reversed(self.processes):
            process.send_signal(signal.SIGTERM)
        for process in self.processes:
            process.wait()
        self.messages.close()

    def _ask_monitor(self, command, **arguments):
        if self._monitor is None:
            self._monitor = socket.socket(socket.AF_UNIX)
            self._monitor.connect(f"{self.work}/monitor")
            self._monitor = self._monitor.makefile("rw")
            self._monitor.readline()
            self._ask_monitor("qmp_capabilities")
        print(json.dumps({"execute": command, "arguments": arguments}), file=self._monitor,
              flush=True)
        while True:
            answer = json.loads(self._monitor.readline())
            if "event" not in answer:
                return answer

    def do(self, request):
        """What a check asks for: returns why it could not be done, or nothing."""
        action, *words = request.split()
        if action == "plug":
            answer = self._ask_monitor("device_add", driver="usb-serial", id="gps", bus="usb.0",
                                       chardev=words[0])
        elif action == "unplug":
            answer = self._ask_monitor("device_del", id="gps")
        elif action == "attach":  # an I2C bus
            answer = self._ask_monitor("device_add", driver="usb-redir", id=words[0], bus="usb.0",
                                       chardev=words[0])
        elif action == "detach":
            answer = self._ask_monitor("device_del", id=words[0])
        elif action in ("mute", "unmute"):
            self.buses[words[0]].is_mute = action == "mute"
            return ""
        elif action == "forget-transfers":
            self.buses[words[0]].transfers = []
            return ""
        elif action == "expect-transfers":
            bus = self.buses[words[0]]
            seen, bus.transfers = "; ".join(bus.transfers), []
            expected = " ".join(words[1:])
            return "" if seen == expected else f"the bus has seen {seen}; not {expected}"
        else:
            return f"no such request: {request}"
        return answer.get("error", {}).get("desc", "")


def wait_for(paths):
    for _ in range(200):
        if all(os.path.exists(path) for path in paths):
            return
        time.sleep(0.05)
    raise SystemExit("orb-sim does not offer its lines: see receivers.log")


def planned():
    with open(f"{HERE}/checks.sh", encoding="utf-8") as script:
        return re.findall(r"^check (\S+)", script.read(), re.MULTILINE)


def judge(machine, log):
    """Reads the console to its end. Returns the results by name, and other failures."""
    start = time.monotonic()
    results, failures = {}, []
    for raw in machine.emulator.stdout:
        line = raw.decode(errors="replace").rstrip()
        seconds = time.monotonic() - start
        print(f"{seconds:7.2f} {line}", file=log, flush=True)
        match = re.search(r"@(ok|FAILED|note|please|begin|end) ?(.*)", line)
        if not match:
            continue
        kind, text = match.groups()
        if kind in ("begin", "end"):
            print(f"{text} {seconds:.1f} seconds after the start of the machine", flush=True)
        elif kind == "please":
            problem = machine.do(text)
            if problem:
                failures.append(f"{text}: {problem}")
                print(f"FAILED {text}: {problem}", flush=True)
        elif kind == "note":
            print(f"   {text}", flush=True)
        else:
            results[re.split(r"[: ]", text)[0]] = kind
            print(f"{kind} {text}", flush=True)
    return results, failures


def main():
    orb_sim, folder, chosen = (sys.argv[1:] + [""])[:3]
    with tempfile.TemporaryDirectory() as work, \
            open(f"{folder}/console.log", "w", encoding="utf-8") as log:
        machine = Machine(orb_sim, folder, work, chosen)
        try:
            results, failures = judge(machine, log)
        finally:
            machine.stop()
    names = [name for name in planned() if re.search(chosen, name)]
    failures += [f"{name}: no result" for name in names if name not in results]
    failures += [name for name in results if results[name] != "ok" or name not in names]
    if failures or not names:
        print(f"{len(failures)} failures; the console is in {folder}/console.log")
        for failure in failures:
            print(f"  {failure}")
        return 1
    print(f"{len(names)} checks passed")
    return 0


if __name__ == "__main__":
    sys.exit(main())
