"""Reads Buildroot's external tree: kconfiglib its options, make its makefile, with stubs for what
Buildroot itself would have.

usage: check_buildroot.py TREE WORK_DIRECTORY
"""

import os
import pathlib
import re
import subprocess
import sys

import kconfiglib

MAKEFILE = """
define cmake-package
all:
	@test -f $(ORB_GNSS_SITE)/CMakeLists.txt
	@echo $(ORB_GNSS_VERSION)
	@echo $(ORB_GNSS_DEPENDENCIES)
endef
include $(BR2_EXTERNAL_ORB_GNSS_PATH)/external.mk
"""


def main():
    tree, work = (pathlib.Path(path).resolve() for path in sys.argv[1:])
    os.environ["BR2_EXTERNAL_ORB_GNSS_PATH"] = str(tree)
    options = tree / "package/orb-gnss/Config.in"
    needed = re.findall(r"depends on (BR2_\w+)", options.read_text())
    selected = re.findall(r"select (BR2_\w+)", options.read_text())

    stub = work / "Config.in"
    stub.write_text("".join(f"config {name}\n\tbool \"{name}\"\n" for name in needed + selected) +
                    'source "$BR2_EXTERNAL_ORB_GNSS_PATH/Config.in"\n')
    tree_options = kconfiglib.Kconfig(str(stub))
    assert not tree_options.warnings, tree_options.warnings
    for name in needed + ["BR2_PACKAGE_ORB_GNSS"]:
        tree_options.syms[name].set_value("y")
    for name in selected + ["BR2_PACKAGE_ORB_GNSS"]:
        assert tree_options.syms[name].str_value == "y", name

    (work / "Makefile").write_text(MAKEFILE)
    version, dependencies = subprocess.run(
        ["make", "-s", "-C", work, "--no-print-directory"], check=True, text=True,
        stdout=subprocess.PIPE).stdout.splitlines()
    project = (tree / "../../CMakeLists.txt").read_text()
    assert version == re.search(r"^ *VERSION (\S+)", project, re.M)[1], version
    as_options = {name.replace("-", "_").upper() for name in dependencies.split()}
    missing = {name.removeprefix("BR2_PACKAGE_") for name in selected} - as_options
    assert missing == {"NCURSES_WCHAR"}, missing
    print("ok: Buildroot's external tree")


main()
