#!/bin/sh
# Makes build/target/root.cpio, the root of the emulated machine, and build/target/vmlinuz, its
# kernel: Debian's packages for arm64, unpacked, and what the preset `aarch64` has built.
set -eu
cd "$(dirname "$0")/../.."
. scripts/packages.sh

product=$PWD/build/aarch64
out=$PWD/build/target
base=$out/base      # of packages alone, made once
kernel=$out/kernel  # likewise
root=$out/root

# Scripts of packages are not run, so what only those take, and texts, stay out.
unpack_packages() {
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  use_own_apt "$work"
  # shellcheck disable=SC2086  # the packages are words
  apt-get install -qq -y --download-only $ORB_TARGET_ROOT_PACKAGES > /dev/null
  mkdir -p "$work/base/usr/bin" "$work/base/usr/sbin" "$work/base/usr/lib" "$work/kernel"
  for folder in bin sbin lib; do
    ln -s "usr/$folder" "$work/base/$folder"
  done
  for package in "$work"/cache/archives/*.deb; do
    case ${package##*/} in
      adduser_* | debconf_* | dpkg_* | *-dev_* | gcc-* | *perl* | passwd_* | tar_* | usrmerge_*) ;;
      *) dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$work/base" ;;
    esac
  done
  (cd "$work/base/usr" && rm -rf share/bug share/doc share/info share/lintian share/locale \
    share/man share/zoneinfo lib/*/gconv lib/udev/hwdb.*)

  image=$(apt-cache depends "$ORB_TARGET_KERNEL_PACKAGE" |
    sed -n 's/.*Depends: \(linux-image-[0-9].*\)/\1/p' | head -n 1)
  (cd "$work" && apt-get download -qq "$image" && dpkg-deb -x "$image"_*.deb kernel)
  rm -rf "$base" "$kernel"
  mv "$work/kernel" "$kernel"
  mv "$work/base" "$base"
  unset APT_CONFIG
}

mkdir -p "$out"
[ -e "$base" ] || unpack_packages
release=$(basename "$kernel"/boot/vmlinuz-* | sed 's/^vmlinuz-//')
# Debian 13 has them in /usr/lib.
modules=$(dirname "$(find "$kernel" -type d -path "*/modules/$release")")

rm -rf "$root"
cp -a "$base" "$root"
for folder in dev etc proc root run sys tmp var/lib var/log var/tmp; do
  mkdir -p "$root/$folder"
done
chmod 1777 "$root/tmp" "$root/var/tmp"
rm -rf "$root/var/run" "$root/var/lock"
ln -sfn /run "$root/var/run"
ln -sfn /run/lock "$root/var/lock"
ln -sfn bash "$root/usr/bin/sh"
ln -sfn usr/lib/systemd/systemd "$root/init"

# What takes the emulated processor long and has to do with nothing that is checked: rules and units
# for devices that the machine has not.
for rules in autosuspend block btrfs camera cdrom dm drm evdev fido infiniband input joystick \
  memory mouse mtd net persistent power sensor sound touchpad uaccess v4l seat; do
  rm -f "$root"/usr/lib/udev/rules.d/*"$rules"*.rules
done
for unit in dev-hugepages.mount dev-mqueue.mount modprobe@.service sys-kernel-debug.mount \
  sys-kernel-tracing.mount systemd-journal-flush.service systemd-random-seed.service \
  systemd-update-utmp.service systemd-binfmt.service systemd-remount-fs.service; do
  ln -s /dev/null "$root/etc/systemd/system/$unit"
done

# What the packages' scripts would have made.
cp "$root/usr/share/base-passwd/passwd.master" "$root/etc/passwd"
cp "$root/usr/share/base-passwd/group.master" "$root/etc/group"
echo 'messagebus:x:101:101::/nonexistent:/usr/sbin/nologin' >> "$root/etc/passwd"
echo 'messagebus:x:101:' >> "$root/etc/group"
: > "$root/etc/fstab"
: > "$root/etc/machine-id"
echo target > "$root/etc/hostname"

# The drivers alone that the checks are about, and what those need.
for module in xhci_pci ftdi_sio i2c_dev i2c_tiny_usb; do
  modprobe -d "${modules%/lib/modules}" -S "$release" --show-depends $module 2> /dev/null ||
    { depmod -b "${modules%/lib/modules}" "$release" &&
      modprobe -d "${modules%/lib/modules}" -S "$release" --show-depends $module; }
done | sed -n 's/^insmod //p' | sort -u | while read -r file; do
  to="$root/usr/lib/modules/$release/${file#*"/$release/"}"
  mkdir -p "${to%/*}"
  cp "$file" "$to"
done
cp "$modules/$release"/modules.builtin* "$modules/$release/modules.order" \
  "$root/usr/lib/modules/$release"
depmod -b "$root" "$release"

# The product as it is installed.
DESTDIR=$root cmake --install "$product" --prefix /usr --component runtime > "$out/install.log"
# As a package has it, below /etc and not /usr/etc.
mkdir -p "$root/etc/logrotate.d" "$root/etc/orb-gnss" "$root/usr/lib/orb-target"
[ ! -d "$root/usr/etc" ] || cp -a "$root/usr/etc/." "$root/etc"
cp "$product/bin/target-client" "$root/usr/lib/orb-target/client"
cp tests/target/checks.sh "$root/usr/lib/orb-target/checks"
chmod 755 "$root/usr/lib/orb-target/checks"
cp tests/target/inventory.toml "$root/etc/orb-gnss"
cp tests/target/checks.service tests/target/checks.target "$root/etc/systemd/system"
ln -sfn checks.target "$root/etc/systemd/system/default.target"

cp "$kernel/boot/vmlinuz-$release" "$out/vmlinuz"
(cd "$root" && find . -print0 | cpio --quiet -0 -o -H newc -R 0:0) > "$out/root.cpio.new"
mv "$out/root.cpio.new" "$out/root.cpio"
echo "build/target/root.cpio: $(du -m "$out/root.cpio" | cut -f 1) MiB, Linux $release"
