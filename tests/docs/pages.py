"""The code blocks of a page, and what the page's comments say of them.

Comments that no reader sees stand before a block, each on a line of its own:

    <!-- not run: why the block cannot be run here -->
    <!-- not run (command): why those of its commands that start so cannot be -->
    <!-- run by: the test, below the project's folder, that runs the block -->
    <!-- file: the name under which the block is kept for those after it -->
    <!-- shows: the command whose output the block is -->

At the head of a page, `run by` is about all of its blocks.
"""

import dataclasses
import re
import shutil

COMMENT = re.compile(r"<!-- (not run|run by|file|shows)(?: \((.*?)\))?: (.*) -->")
FENCE = re.compile(r"( *)```(\w*)$")
PROMPT = "$ "

# How the first line of a block without a language tells what it is.
LOOKS_LIKE = (
    ("cpp", r"#include|orb::|std::"),
    ("cmake", r"find_package\(|target_link_libraries\("),
    ("json", r"\{\""),
    ("toml", r"\[|\w[\w-]* = "),
    ("sh", r"\$ |\./|(orb-sim|orbctl|orb-inventoryd) "),
)


@dataclasses.dataclass
class Block:
    page: str
    line: int
    kind: str  # "" for none that is known
    text: str
    comments: list  # of a comment: what, about which command, text

    def __str__(self):
        return f"{self.page}:{self.line}"

    def comment(self, what):
        return next((text for kind, about, text in self.comments if kind == what and not about), "")

    def commands(self):
        """Each with the output that is shown for it, or None; those that are not run left out."""
        commands = []
        has_prompts = self.text.startswith(PROMPT)
        for line in self.text.splitlines():
            if has_prompts and not line.startswith(PROMPT):
                if commands[-1][0].endswith("\\"):
                    commands[-1][0] += "\n" + line
                else:
                    commands[-1][1].append(line)
            elif commands and commands[-1][0].endswith("\\"):
                commands[-1][0] += "\n" + line
            elif line.strip() not in ("", "..."):
                commands.append([line.removeprefix(PROMPT), [] if has_prompts else None])
        for what, about, _ in self.comments:
            if what == "not run" and about:
                kept = [command for command in commands if not command[0].startswith(about)]
                assert len(kept) < len(commands), f"{self}: there is no command {about}"
                commands = kept
        return commands


def kind_of(language, text):
    known = {"bash": "sh", "sh": "sh", "yaml": "yaml"}
    if language:
        return known.get(language, language)
    kind = next((kind for kind, start in LOOKS_LIKE if re.match(start, text)), "")
    return kind or ("sh" if shutil.which(text.split()[0]) else "")


def blocks_of(name, text):
    """The fenced and the indented code blocks."""
    blocks, comments, of_page = [], [], []
    lines = text.split("\n")
    at = 0
    while at < len(lines):
        start, body, language = at, [], ""
        if fence := FENCE.match(lines[at]):
            language = fence[2]
            at += 1
            while lines[at].strip() != "```":
                body.append(lines[at].removeprefix(fence[1]))
                at += 1
            at += 1
        elif lines[at].startswith("    ") and (at == 0 or not lines[at - 1].strip()):
            while at < len(lines) and (lines[at].startswith("    ") or not lines[at].strip()):
                body.append(lines[at][4:])
                at += 1
        else:
            if comment := COMMENT.fullmatch(lines[at]):
                comments.append(comment.groups())
            elif lines[at].strip():
                if lines[at].startswith("# "):
                    of_page = comments
                comments = []
            at += 1
            continue
        code = "\n".join(body).rstrip() + "\n"
        blocks.append(Block(name, start + 1, kind_of(language, code), code, comments + of_page))
        comments = []
    return blocks


def anchors_of(text):
    """The anchors of the headings, as hosts of Markdown make them."""
    text = re.sub(r"^( *)```.*?^\1```", "", text, flags=re.MULTILINE | re.DOTALL)
    headings = re.findall(r"^#+ (.*)$", text, re.MULTILINE)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def links_of(text):
    """The targets of the links and images, without those in code."""
    text = re.sub(r"^( *)```.*?^\1```|^    [^\n]*", "", text, flags=re.MULTILINE | re.DOTALL)
    return re.findall(r"\]\(([^)\s]+)\)", re.sub(r"`[^`\n]*`", "``", text))


# The members that a table of a page shows, by class: how the section's heading starts.
CLASSES = (
    ("## Reaching the operations", "orbController"),
    ("## The 60 operations", "ORBControlInterface"),
    ("## Sequences", None),
    ("## The driver's own commands", "orbController_QN4470T01"),
)


def signatures_of(text):
    """Triples of class, member and type of a pointer to it, from the page on the operations."""
    owner, is_table, found = None, False, []
    for line in text.splitlines():
        owner = next((name for heading, name in CLASSES if line.startswith(heading)), owner)
        if re.match(r"\| (operation|command|member) \|", line):
            is_table = owner is not None
        elif not line.startswith("|"):
            is_table = False
        elif is_table and not line.startswith("|---"):
            for cell in re.findall(r"`([^`]*)`", line.split("|")[1]):
                result, name, arguments, const = re.fullmatch(
                    r"(?:([\w:& ]+) )?(\w+)\((.*)\)( const)?", cell).groups()
                types = ", ".join(re.sub(r"\w+$", "", argument).strip()
                                  for argument in arguments.split(",") if argument)
                pointer = f"{result or 'unsigned int'} ({owner}::*)({types}){const or ''}"
                found.append((owner, name, pointer))
    return found
