"""The command lines of docs/orbctl.md: each runs, and prints what the page shows."""

import os
import pathlib
import re
import unittest

from orbctl import ORBCTL, OrbctlTest

PAGE = pathlib.Path(os.environ["ORBCTL_PAGE"]).read_text()

# Those that end otherwise than with 0, and why.
STATUS = {
    "orbctl watch": 2,  # there is no terminal
}

# What stands for another word, and what is not one command line.
PLACEHOLDER = re.compile(r"\b[A-Z]{2,}\b|\[|\.\.\.")

SURVEY_IN_SECONDS = """
description = "The receiver's clock goes a thousand times as fast."
[time]
rate = 1000
"""


def sessions():
    """Lists of command lines that are run one after another, each with the output that is shown."""
    for block in re.findall(r"(?:^(?:    .*)?\n)+", PAGE, re.MULTILINE):
        lines = []
        for line in block.splitlines():
            if match := re.fullmatch(r"    (\$ )?(orbctl.*?)( +#.*)?", line):
                lines.append((match[2], [] if match[1] else None))
            elif lines and lines[-1][1] is not None and line:
                lines[-1][1].append(line[4:])
        if lines:
            yield lines
    in_text = re.sub(r"^    .*$", "", PAGE, flags=re.MULTILINE)
    for line in re.findall(r"`(orbctl(?: [^`]*)?)`", in_text):
        yield [(line, None)]


def without_what_varies(text):
    """Without times, and blanks at the ends of lines."""
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}", "<time>", text)
    return [line.rstrip() for line in text.splitlines()]


class Page(OrbctlTest):
    def run_session(self, lines):
        """Runs them on one receiver; returns for each its exit status, output and complaints."""
        self.environment["PATH"] = f"{os.path.dirname(ORBCTL)}:{os.environ['PATH']}"
        script = "".join(f"{line} > out.{number} 2> err.{number}; echo $? > status.{number}\n"
                         for number, line in enumerate(lines))
        if "--simulate" in script:  # each brings its own
            result = self.run_program("sh", "-c", script)
        else:
            fast = self.folder / "fast.toml"
            fast.write_text(SURVEY_IN_SECONDS)
            result = self.shell(script, device=["--scenario", str(fast)] if "--wait" in script else [])
        self.check(result, 0, "", "")
        return [[(self.folder / f"{name}.{number}").read_text() for name in ("status", "out", "err")]
                for number in range(len(lines))]

    def test_shows_what_orbctl_does(self):
        count = 0
        for session in sessions():
            lines = [(line, shown) for line, shown in session if not PLACEHOLDER.search(line)]
            results = self.run_session([line for line, _ in lines])
            for (line, shown), (status, output, complaints) in zip(lines, results):
                with self.subTest(line):
                    self.assertEqual(int(status), STATUS.get(line, 0), complaints)
                    if shown is not None:
                        self.assertEqual(without_what_varies(output),
                                         without_what_varies("\n".join(shown)))
                    count += 1
        self.assertGreater(count, 40)


if __name__ == "__main__":
    unittest.main()
