# Sourced: makes the root of another Debian system, with nothing but the essential packages and apt,
# and runs commands in it. Needs scripts/packages.sh, and root.

# can_make_roots: otherwise says what is missing.
can_make_roots() {
  if [ "$(id -u)" != 0 ]; then
    echo "Making the root of another system takes root" >&2
    return 1
  fi
  if ! unshare --mount true 2> /dev/null; then
    echo "Mounting /proc in the root takes CAP_SYS_ADMIN: a machine or a privileged container" >&2
    return 1
  fi
  install_packages debian-archive-keyring mmdebstrap
}

# make_root SUITE ROOT [OPTION]...: apt inside goes the same way to the packages as outside.
make_root() (
  suite=$1 root=$2
  shift 2
  apt-config dump --format '%f "%v";%n' Acquire::http Acquire::https > "$root.apt"
  mmdebstrap --variant=minbase --aptopt="$root.apt" "$@" "$suite" "$root" "$(debian_mirror)" \
    > "$root.log" 2>&1 || { cat "$root.log" >&2; return 1; }
)

# in_root FOLDER COMMAND [ARGUMENT]...: what is mounted in the root is mounted there alone, and gone
# with the processes that see it.
in_root() {
  # shellcheck disable=SC2016  # the inner shell's arguments
  unshare --mount --fork --pid --kill-child sh -euc '
    root=$1
    shift
    mount -t proc proc "$root/proc"
    mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
    mount -t tmpfs tmpfs "$root/dev/shm"
    ln -sf pts/ptmx "$root/dev/ptmx"
    exec env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb \
      DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 \
      ${http_proxy:+http_proxy="$http_proxy"} ${https_proxy:+https_proxy="$https_proxy"} \
      chroot "$root" "$@"' sh "$@"
}
