# Sourced by ./demo, ./test and ./bench: installs the Debian or Ubuntu packages that they need.

# What building and running the product takes.
ORB_BUILD_PACKAGES="g++ cmake ninja-build pkg-config libsystemd-dev libtomlplusplus-dev
  libcli11-dev libeigen3-dev libfmt-dev libncurses-dev nlohmann-json3-dev
  dbus-daemon python3"

# What testing it takes besides.
ORB_TEST_PACKAGES="abigail-tools bash binutils clang dbus-bin diffutils fish gpsbabel i2c-tools
  iproute2 libclang-rt-dev libgmock-dev libgtest-dev locales mandoc procps python3
  python3-jsonschema python3-nmea2 python3-ntp python3-smbus strace tmux util-linux valgrind xz-utils
  zsh"

# What making the reference of the headers takes besides: a test makes it.
ORB_DOC_PACKAGES="doxygen python3"

# What the steps `lint` and `coverage` of ./test take besides.
ORB_LINT_PACKAGES="clang-format clang-tidy cppcheck"
ORB_COVERAGE_PACKAGES="gcovr"

# What the benchmark takes besides building the product.
ORB_BENCH_PACKAGES="libmodbus-dev nlohmann-json3-dev python3"

# What the preset `aarch64` takes: to build and run its tests on this machine, and of the other
# machine's packages (scripts/aarch64_sysroot.sh).
ORB_AARCH64_PACKAGES="g++-aarch64-linux-gnu python3 python3-nmea2 qemu-user"
ORB_AARCH64_SYSROOT_PACKAGES="libc6-dev libcli11-dev libeigen3-dev libfmt-dev libgmock-dev
  libgtest-dev libncurses-dev
  libstdc++6 libsystemd-dev libtomlplusplus-dev nlohmann-json3-dev"

# What scripts/make_packages.sh takes besides building the product, and the step `packages` of ./test.
ORB_PACKAGING_PACKAGES="build-essential debhelper debian-archive-keyring fakeroot"
ORB_PACKAGING_TEST_PACKAGES="binutils diffoscope-minimal lintian make mmdebstrap python3-kconfiglib"

# What the step `target` of ./test takes besides, and what the emulated machine's root and kernel are
# made of (tests/target/make_root.sh).
ORB_TARGET_PACKAGES="cpio kmod qemu-system-arm"
ORB_TARGET_ROOT_PACKAGES="base-passwd bash coreutils dbus findutils grep gzip i2c-tools kmod libfmt-dev
  libncursesw6 libstdc++6 logrotate mount procps sed systemd systemd-sysv udev util-linux"
ORB_TARGET_KERNEL_PACKAGE="linux-image-arm64"

# What drawing the benchmark's figures takes besides.
ORB_PLOT_PACKAGES="python3-matplotlib"

# debian_mirror: where Debian's packages are fetched from: ORB_DEBIAN_MIRROR, or the machine's own
# mirror where this is Debian.
debian_mirror() {
  mirror=${ORB_DEBIAN_MIRROR:-$(apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' \
    'Label: Debian' 2> /dev/null | head -n 1)}
  echo "${mirror:-http://deb.debian.org/debian}"
}

# use_own_apt FOLDER: from here on apt-get knows the packages of this Debian release for arm64, and
# nothing of this machine's own, which stay as they are. It keeps all in FOLDER.
use_own_apt() {
  own_apt_mirror=$(debian_mirror)
  mkdir -p "$1/empty" "$1/state" "$1/cache/archives/partial"
  : > "$1/status"
  echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $own_apt_mirror $(
    . /etc/os-release
    echo "$VERSION_CODENAME"
  ) main" > "$1/sources.list"
  cat > "$1/apt.conf" << END
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Install-Recommends "false";
APT::Sandbox::User "";
Acquire::Languages "none";
Dir::State "$1/state";
Dir::State::status "$1/status";
Dir::Cache "$1/cache";
Dir::Etc::sourcelist "$1/sources.list";
Dir::Etc::sourceparts "$1/empty";
Dir::Etc::preferences "$1/empty/none";
Dir::Etc::preferencesparts "$1/empty";
END
  export APT_CONFIG="$1/apt.conf"
  apt-get update -qq
}

is_installed() {
  [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# install_packages PACKAGE...: installs those that are missing, or says how.
install_packages() {
  missing=
  for package in "$@"; do
    is_installed "$package" || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0

  if [ "$(id -u)" = 0 ]; then
    as_root=
  elif command -v sudo > /dev/null && sudo -n true 2> /dev/null; then
    as_root=sudo
  else
    echo "These packages are missing; install them as root and try again:" >&2
    echo "  apt-get install$missing" >&2
    return 1
  fi
  echo "Installing$missing" >&2
  # shellcheck disable=SC2086  # the packages, and sudo or nothing, are words
  $as_root apt-get update -qq &&
    $as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -qq -y --no-install-recommends $missing > /dev/null
}

# unpack_ntpsec FOLDER: gets the NTP server that a test runs. It is not installed, since that would
# start it, and remove the machine's own time service.
unpack_ntpsec() {
  [ ! -e "$1" ] || return 0
  mkdir -p "$1.new"
  (cd "$1.new" && apt-get download -qq ntpsec 2> /dev/null && dpkg-deb -x ntpsec_*.deb . &&
    rm ntpsec_*.deb) && mv "$1.new" "$1" && return 0
  rm -rf "$1.new"
  echo "There is no ntpsec: the test that feeds an NTP server is left out" >&2
}
