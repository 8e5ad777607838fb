#!/bin/sh
# Runs as root in a clean Debian of its own, with packages in /check/new, the same of a lower version
# in /check/old, and the sources in /check/source: installs, upgrades, uses and purges them.
set -eu
. /etc/os-release
cd /check

fail() {
  echo "FAILED in $PRETTY_NAME: $1" >&2
  exit 1
}

ok() { echo "ok in $PRETTY_NAME: $1"; }

# quietly COMMAND...: its output counts only when it fails.
quietly() { "$@" > /check/log 2>&1 || { cat /check/log >&2; fail "$*"; }; }

# All files but those that package management and running programs keep of themselves.
list_files() {
  find / -xdev \( -path /check -o -path /proc -o -path /sys -o -path /dev -o -path /run -o \
    -path /tmp -o -path /root -o -path /var/cache -o -path /var/log -o -path /var/lib/apt -o \
    -path '/var/lib/dpkg/*-old' \) -prune -o -print | sort
}

names=$(for package in new/*.deb; do dpkg-deb --field "$package" Package; done)

# foreign_dependencies FIELD: what the packages depend on, but each other.
foreign_dependencies() {
  for package in new/*.deb; do
    dpkg-deb --field "$package" "$1"
  done | tr ',' '\n' | sed 's/^ *//' | grep -v -E '^$|^(lib)?orb-' | sort -u | paste -s -d,
}

quietly apt-get -q update
dependencies=$(foreign_dependencies Depends),$(foreign_dependencies Recommends)
quietly apt-get -q -y satisfy "$dependencies" bash-completion dbus-bin fish procps zsh
list_files > before

quietly apt-get -q -y install ./old/*.deb
ok "version $(dpkg-query --show --showformat='${Version}' orb-gnss-tools) is installed"
echo "# a line of the administrator's" >> /etc/logrotate.d/orb-gnss
quietly apt-get -q -y install ./new/*.deb
grep -q "administrator's" /etc/logrotate.d/orb-gnss || fail "the administrator's change is lost"
ok "upgraded to $(dpkg-query --show --showformat='${Version}' orb-gnss-tools)"

[ "$(orbctl --simulate get elevation-limit)" = "5 degrees" ] || fail "orbctl --simulate"
ok "orbctl --simulate"

for file in \
  /etc/logrotate.d/orb-gnss \
  /etc/systemd/system/multi-user.target.wants/orb-inventoryd.service \
  /lib/systemd/system/orb-inventoryd.service \
  /lib/udev/rules.d/60-orb-gnss.rules \
  /usr/lib/sysusers.d/orb-inventoryd.conf \
  /usr/share/bash-completion/completions/orbctl \
  /usr/share/dbus-1/system-services/org.orb_gnss.Inventory1.service \
  /usr/share/dbus-1/system.d/org.orb_gnss.Inventory1.conf \
  /usr/share/doc/orb-gnss/operations.md \
  /usr/share/fish/vendor_completions.d/orbctl.fish \
  /usr/share/orb-gnss/inventory.example.toml \
  /usr/share/orb-gnss/scenarios/healthy.toml \
  /usr/share/zsh/vendor-completions/_orbctl; do
  [ -e "$file" ] || [ -L "$file" ] || fail "there is no $file"
done
# A clean root leaves manual pages out or has no man: their package says that it has them.
dpkg --listfiles orb-gnss-tools | grep -q /man1/orbctl.1.gz || fail "no manual page of orbctl"
dpkg --listfiles orb-gnss-tools | grep -q /man1/orb-sim.1.gz || fail "no manual page of orb-sim"
dpkg --listfiles orb-inventoryd | grep -q /man8/orb-inventoryd.8.gz ||
  fail "no manual page of orb-inventoryd"
for page in /usr/share/doc/orb-gnss/*.md; do
  for link in $(grep -o ']([./]*[A-Za-z][^:)]*)' "$page" | sed 's/^](//; s/[#)].*//'); do
    [ -e "${page%/*}/$link" ] || fail "$page leads to $link"
  done
  ! grep '^<!--' "$page" || fail "comments for tests in $page"
done
zcat /usr/share/doc/orb-gnss-tools/changelog.Debian.gz > source/debian/changelog
ok "files stand where they belong"

# shellcheck disable=SC2016  # the shells' own variables
{
  bash -c '. /usr/share/bash-completion/bash_completion && _completion_loader orbctl;
    complete -p orbctl' > /dev/null || fail "bash does not complete orbctl"
  [ "$(zsh -c 'autoload -U compinit && compinit -u -D && echo $_comps[orbctl]')" = _orbctl ] ||
    fail "zsh does not complete orbctl"
  fish -c 'complete -C "orbctl "' | grep -q '^survey' || fail "fish does not complete orbctl"
}
ok "bash, zsh and fish complete orbctl"

if udevadm verify --help > /dev/null 2>&1; then
  quietly udevadm verify /usr/lib/udev/rules.d/60-orb-gnss.rules
  ok "udevadm takes the rule"
fi
quietly logrotate -d /etc/logrotate.d/orb-gnss
quietly systemd-analyze verify orb-inventoryd.service
getent passwd orb-inventory > /dev/null || fail "there is no user orb-inventory"
ok "logrotate, systemd and the list of users know it"

# Started by the first call, as its own user.
mkdir -p /etc/orb-gnss /run/dbus
printf '[[module]]\nlocation = 7\n' > /etc/orb-gnss/inventory.toml
dbus-daemon --system --fork --print-pid > /check/bus
as_nobody() { setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"; }
as_nobody dbus-send --system --print-reply --dest=org.orb_gnss.Inventory1 \
  /org/orb_gnss/Inventory1 org.orb_gnss.Inventory1.GetModuleLocations > reply || fail "no answer"
grep -q 'uint32 7' reply || fail "the inventory has no location 7"
[ "$(ps -o user:32= -C orb-inventoryd)" = orb-inventory ] || fail "the service's user"
! as_nobody dbus-send --system --print-reply --dest=org.orb_gnss.Inventory1 \
  /org/orb_gnss/Inventory1 org.freedesktop.DBus.Properties.GetAll string:x 2> refused ||
  fail "the policy lets everything through"
grep -q AccessDenied refused || fail "refused in another way"
kill "$(cat bus)"
rm -r /etc/orb-gnss
ok "the first call starts orb-inventoryd as its own user, and the bus obeys the policy"

# shellcheck disable=SC2086  # the names are words
quietly apt-get -q -y purge $names
list_files > after
# A user stays where files of his may; systemd-sysusers keeps copies of what it changes.
diff before after | grep -v -E '^([0-9,acd]+|---)$|^> /etc/\.?(passwd|group|shadow|gshadow|pwd)' &&
  fail "purging leaves this behind"
ok "purging leaves nothing behind but the user orb-inventory"

quietly apt-get -q -y install autopkgtest
autopkgtest --no-built-binaries /check/new/*.deb /check/source/ -- null > tests 2>&1 ||
  { cat tests >&2; fail "autopkgtest"; }
sed -n '/summary/,$p' tests
ok "autopkgtest"
