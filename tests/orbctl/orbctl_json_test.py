"""What --json prints: for every command one object, as the schema has it."""

import json
import re
import subprocess
import unittest

import jsonschema

from orbctl import LIMIT, ORBCTL, OrbctlTest

# Command lines of every command, and the device that they are run on. The command is the first
# word, where it is not said otherwise.
COMMANDS = [
    ["status"], ["detect"], ["info"], ["time"], ["position"], ["satellites"], ["interference"],
    ["doctor"], ["get", "elevation-limit", "constellations", "sbas", "fix-mode"],
    ["set", "elevation-limit", "15", "constellations", "gps", "sbas", "off", "output", "binary"],
    ["set", "--dry-run", "elevation-limit", "15"], ["set", "elevation-limit", "5"],
    ["keys"], ["keys", "--values"], ["pulse"], ["constellations"], ["masks"],
    ["backup", "saved.toml"], ["backup", "-"], ["survey"], ["survey", "status"], ["survey", "dynamic"],
    ["survey", "static", "48.25", "11.5", "520"], ["survey", "auto", "7200"],
    ["antenna-power", "on"], ["defaults", "application"], ["restart"], ["reset", "hot"],
    ["uart", "0", "115200"], ["identity"], ["explain", "13"], ["operations"],
    ["operations", "setSurveyStatic"], ["call", "getElevationLimit"], ["call", "timeStamp"],
    ["call", "gpsObtGetTimeMode"], ["call", "IsOrbitek"], ["raw", "64", "07"], ["messages"],
    ["help"], ["help", "survey", "auto"], ["version"], ["completion", "bash"], ["schema"],
]
# Firmware that refuses two queries.
OLD = """
description = "of a test"
[[fault]]
kind = "refusal"
message = "query-pps2-frequency"
[[fault]]
kind = "refusal"
message = "query-gps-time"
"""
# Those that a test of its own runs.
ELSEWHERE = {"restore", "watch", "log"}


class JsonOutput(OrbctlTest):
    @classmethod
    def setUpClass(cls):
        schema = subprocess.run([ORBCTL, "schema"], check=True, capture_output=True, timeout=LIMIT)
        cls.schema = json.loads(schema.stdout)
        jsonschema.Draft202012Validator.check_schema(cls.schema)

    def problem(self, data):
        """The reason why it is not as the schema says, in short; None where it is."""
        errors = jsonschema.Draft202012Validator(self.schema).iter_errors(data)
        error = jsonschema.exceptions.best_match(errors)
        return error and f"{list(error.path)}: {error.message}"

    def check_json(self, result, status, command):
        """One object, for which the schema has one shape."""
        self.assertEqual((result.returncode, result.stderr), (status, ""))
        data = json.loads(result.stdout)
        self.assertEqual(data["command"], command)
        self.assertIsNone(self.problem(data))
        return data

    def test_has_an_entry_for_every_command(self):
        page = self.run_program(ORBCTL, "--help", check=True).stdout.partition("Without COMMAND")[0]
        commands = set(re.findall(r"^  ([a-z][a-z-]*) ", page, re.MULTILINE))
        self.assertIn("status", commands)
        self.assertEqual(commands, {arguments[0] for arguments in COMMANDS} | ELSEWHERE)
        self.assertEqual(set(self.schema["$defs"]), commands - {"watch"} | {"failure"})

    def test_is_as_the_schema_says(self):
        for arguments in COMMANDS:
            with self.subTest(arguments):
                self.check_json(self.orbctl("--json", *arguments), 0, arguments[0])

    def test_is_as_the_schema_says_for_what_is_restored(self):
        for change, expected in {
                "set sbas off": {"sbas": {"old": False, "new": True}},
                "survey auto 7200": {"survey": {"mode": "dynamic"}}}.items():
            with self.subTest(change):
                result = self.shell(f"{ORBCTL} -q backup saved.toml && {ORBCTL} -q {change} && "
                                    f"{ORBCTL} --json restore saved.toml")
                data = self.check_json(result, 0, "restore")
                self.assertEqual(data["settings"], expected)

    def test_is_as_the_schema_says_for_the_log(self):
        result = self.shell(f"{ORBCTL} detect 2>&-; {ORBCTL} --json log", device=["--no-receiver"])
        data = self.check_json(result, 0, "log")
        [entry] = data["entries"]
        self.assertEqual((entry["failure"], entry["message"]), ("not sent", "02 00"))

    def test_tells_of_failures(self):
        (self.folder / "old.toml").write_text(OLD)
        old = ["--scenario", "old.toml"]
        for arguments, device, status in [
                (["get", "elevation-limit"], ["--no-module"], 5), (["statsu"], [], 2),
                (["raw", "02"], [], 1), (["doctor"], ["--no-module"], 5), (["watch"], [], 2),
                (["help", "statsu"], [], 2), (["pulse"], old, 1), (["keys", "--values"], old, 1),
                (["backup", "-"], old, 1), (["set", "sbas", "off", "frequency-output", "1"], old, 1),
                (["status"], old, 1)]:
            with self.subTest(arguments):
                result = self.orbctl("--json", *arguments, device=device)
                data = json.loads(result.stdout)
                self.assertIsNone(self.problem(data))
                self.assertEqual((result.returncode, data["ok"], data["error"]["status"]),
                                 (status, False, status))

    def test_has_no_place_without_a_fix(self):
        (self.folder / "indoors.toml").write_text('[solution]\nfix = "none"\n')
        result = self.orbctl("--json", "position", device=["--scenario", "indoors.toml"])
        data = self.check_json(result, 0, "position")
        self.assertEqual([data[key] for key in ("fix", "latitude", "longitude",
                                                "ellipsoid_altitude", "sea_level_altitude")],
                         ["NO-FIX", None, None, None, None])

    def test_a_call_has_the_outputs_of_its_operation(self):
        data = self.json("call", "getElevationLimit")
        for wrong in [{"operation": "getMinCNo"}, {"result": 4}, {"outputs": {}},
                      {"outputs": {"limit": "5"}}, {"outputs": {"limit": 5, "more": 1}},
                      {"more": 1}]:
            with self.subTest(wrong):
                self.assertIsNotNone(self.problem(data | wrong))


if __name__ == "__main__":
    unittest.main()
