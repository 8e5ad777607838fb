"""What bash, zsh and fish offer to complete, each with its own script."""

import unittest

from orbctl import ORBCTL, OrbctlTest

KEYS = set("""antenna-delay constellations sbas qzss second-band cnr-limit elevation-limit fix-mode
    dop-mask navigation-mode interference-detection time-reference pps-mode pulse-width
    frequency-output power-mode update-rate navigation-interval nmea-interval output""".split())
GLOBAL = {"--help", "--version", "--deadline", "--json", "--quiet", "--verbose", "--simulate"}

# A command line, of which the last word is completed, and what is offered for it.
OFFERED = {
    "orbctl se": {"set"},
    "orbctl sta": {"status"},
    "orbctl --deadline 5 --json re": {"restore", "restart", "reset"},
    "orbctl --js": {"--json"},
    "orbctl --": GLOBAL,
    "orbctl get ": KEYS,
    "orbctl get sbas p": {"pps-mode", "pulse-width", "power-mode"},
    "orbctl keys --": GLOBAL | {"--values"},
    "orbctl set sb": {"sbas"},
    "orbctl set sbas ": {"on", "off"},
    "orbctl set sbas on ": KEYS,
    "orbctl set power-mode n": {"normal"},
    "orbctl set constellations ": {"gps", "galileo", "beidou", "glonass"},
    "orbctl set sbas off elevation-limit 15 qzss o": {"on", "off"},
    "orbctl set --dry": {"--dry-run"},
    "orbctl get sbas --q": {"--quiet"},
    "orbctl antenna-power ": {"on", "off"},
    "orbctl defaults ": {"application", "configuration", "factory"},
    "orbctl reset ": {"hot", "warm", "cold"},
    "orbctl survey a": {"auto"},
    "orbctl survey --w": {"--wait"},
    "orbctl call setElev": {"setElevationLimit"},
    "orbctl help sur": {"survey"},
    "orbctl restore sav": {"saved.toml"},
    "orbctl elevation": set(),
}

# Each prints what is offered for its arguments, a line each.
BASH = """
. ./script
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
[ "$(complete -p orbctl)" = "complete -o default -F _orbctl orbctl" ] || exit 1
_orbctl
# As the option `default` has it.
[ ${#COMPREPLY[@]} != 0 ] || mapfile -t COMPREPLY < <(compgen -f -- "${COMP_WORDS[-1]}")
printf '%s\\n' "${COMPREPLY[@]}"
"""
ZSH = """
autoload -U compinit && compinit -u -d ./compdump
. ./script
[ $_comps[orbctl] = _orbctl ] || exit 1
compadd() { shift; print -l -- ${(M)@:#${words[CURRENT]}*}; }
_files() { print -l -- ${words[CURRENT]}*(N); }
words=("$@")
CURRENT=$#
_orbctl
"""
FISH = """
source ./script
complete -C "$argv"
"""


class Completion(OrbctlTest):
    def offered(self, shell, *command):
        script = self.run_program(ORBCTL, "completion", shell, check=True).stdout
        (self.folder / "script").write_text(script)
        (self.folder / "saved.toml").touch()
        for line, expected in OFFERED.items():
            with self.subTest(line):
                words = [line] if shell == "fish" else line.split(" ")
                result = self.run_program(*command, *words)
                self.assertEqual((result.returncode, result.stderr), (0, ""))
                # After a tab, fish has the description.
                offers = {offer.split("\t")[0] for offer in result.stdout.splitlines()} - {""}
                self.assertEqual(offers, expected)

    def test_bash(self):
        self.offered("bash", "bash", "--norc", "-c", BASH, "bash")

    def test_zsh(self):
        self.offered("zsh", "zsh", "-f", "-c", ZSH, "zsh")

    def test_fish(self):
        self.environment["HOME"] = str(self.folder)
        self.offered("fish", "fish", "--no-config", "-c", FISH)


if __name__ == "__main__":
    unittest.main()
