#!/bin/bash
# Runs on the emulated machine, started by systemd, and reports over the console. A line that begins
# with @ is for run.py: a result, something seen, or what is to be done from outside.
set -u

client=/usr/lib/orb-target/client
log=/var/log/orbset-errors.log
identity=/tmp/orbitekChip-info.txt
inventory=(org.orb_gnss.Inventory1 /org/orb_gnss/Inventory1 org.orb_gnss.Inventory1)
why=

echo "@begin checks"

now() { echo $((${EPOCHREALTIME/./} / 1000)); } # milliseconds
note() { echo "@note $*"; }
please() { echo "@please $*"; }

# check NAME: runs the function of that name, which returns 1 where it is not so.
check() {
  why=
  local start
  start=$(now)
  if "$1"; then
    echo "@ok $1 ($(($(now) - start)) ms)"
  else
    echo "@FAILED $1: $why"
  fi
}

# Each of these says why not.
is() { [ "$1" = "$2" ] || { why="$1, not $2"; return 1; }; }
has() { [[ $1 == *"$2"* ]] || { why="no \"$2\" in: $1"; return 1; }; }
within() { (($2 <= $1 && $1 <= $3)) || { why="$1, not $2 to $3"; return 1; }; }

# wait_until SECONDS COMMAND...
wait_until() {
  local end=$(($(now) + $1 * 1000))
  shift
  until "$@" > /dev/null 2>&1; do
    (($(now) < end)) || { why="never: $*"; return 1; }
    sleep 0.1
  done
}

# run COMMAND...: puts output, status and duration into $output, $status and $took.
run() {
  local start
  start=$(now)
  output=$(timeout 120 "$@" 2>&1)
  status=$?
  took=$(($(now) - start))
}

# port_is NAME: whether /dev/tty_gps leads there.
port_is() { [ "$(readlink -f /dev/tty_gps)" = "/dev/$1" ]; }

# plug RECEIVER, unplug: the USB adapter, with that receiver behind it.
plug() {
  please plug "$1"
  wait_until 20 test -e /dev/tty_gps && udevadm settle
}
unplug() {
  please unplug
  wait_until 20 gone && udevadm settle
}
gone() { [ ! -e /dev/tty_gps ]; }

# ---- systemd starts the inventory service

the_first_call_starts_the_service() {
  is "$(systemctl is-active orb-inventoryd)" inactive || return
  run busctl call "${inventory[@]}" GetModuleLocations
  is "$output" "au 1 1" || { journalctl -u orb-inventoryd --no-pager -n 20; return 1; }
  note "the first call, which starts the service, takes $took ms"
  is "$(systemctl is-active orb-inventoryd)" active
}
check the_first_call_starts_the_service

the_service_has_no_rights() {
  local process
  process=$(systemctl show -P MainPID orb-inventoryd)
  is "$(stat -c %U "/proc/$process")" orb-inventory || return
  has "$(tr '\t' ' ' < "/proc/$process/status")" "CapBnd: 0000000000000000" || return
  has "$(tr '\t' ' ' < "/proc/$process/status")" "NoNewPrivs: 1" || return
  has "$(tr '\t' ' ' < "/proc/$process/status")" "Seccomp: 2"
}
check the_service_has_no_rights

the_service_is_ready_when_started() {
  systemctl restart orb-inventoryd || { why="restart: $?"; return 1; }
  run busctl --auto-start=no call "${inventory[@]}" GetSystemRecord us 1 HardwareSetId
  is "$output" 'is 1 "47205318-001"'
}
check the_service_is_ready_when_started

a_reload_reads_the_file_anew() {
  cp /etc/orb-gnss/inventory.toml /root
  sed -i 's/001"/002"/' /etc/orb-gnss/inventory.toml
  systemctl reload orb-inventoryd
  wait_until 5 inventory_says 47205318-002 || return
  cp /root/inventory.toml /etc/orb-gnss
  systemctl reload orb-inventoryd
  wait_until 5 inventory_says 47205318-001
}
inventory_says() { busctl call "${inventory[@]}" GetSystemRecord us 1 HardwareSetId | grep "$1"; }
check a_reload_reads_the_file_anew

a_crashed_service_comes_back() {
  local process
  process=$(systemctl show -P MainPID orb-inventoryd)
  kill -SEGV "$process"
  wait_until 10 restarted "$process" || return
  run busctl --auto-start=no call "${inventory[@]}" GetModuleLocations
  is "$output" "au 1 1"
}
restarted() {
  [ "$(systemctl is-active orb-inventoryd)" = active ] &&
    [ "$(systemctl show -P MainPID orb-inventoryd)" != "$1" ]
}
check a_crashed_service_comes_back

any_user_may_ask() {
  run setpriv --reuid=65534 --clear-groups busctl call "${inventory[@]}" GetModuleLocations
  is "$output" "au 1 1"
}
check any_user_may_ask

# ---- no port

without_a_port_nothing_is_sent() {
  run $client ask 1
  has "$output" "asked 1: 8 after" || return
  run orbctl get elevation-limit
  note "orbctl without a port: status $status after $took ms: ${output//$'\n'/ | }"
  is "$status" 4
}
check without_a_port_nothing_is_sent

# ---- the board's ports, by a copy of the rule

# name_port PORT: as the rule's own comment says.
name_port() {
  sed 's/^#KERNEL=="ttyAMA1"/KERNEL=="'"$1"'"/' /usr/lib/udev/rules.d/60-orb-gnss.rules \
    > /etc/udev/rules.d/60-orb-gnss.rules
  udevadm control --reload
  udevadm trigger --subsystem-match=tty
  udevadm settle
}

# Every operation over whatever /dev/tty_gps is.
every_operation() {
  run $client operations
  note "$1: ${output##*$'\n'}"
  is "$status" 0 || { echo "$output" | grep -A1 WRONG; return 1; }
}

a_port_at_another_speed_hears_garbage() {
  ln -s ttyS1 /dev/tty_gps
  run orbctl --deadline 4 doctor
  rm /dev/tty_gps
  note "doctor at the kernel's first speed: status $status: $(grep -i speed <<< "$output")"
  has "$output" "9600 bit/s" || return
  is "$status" 3
}
check a_port_at_another_speed_hears_garbage

the_rule_names_a_port_of_the_board() {
  name_port ttyS1
  port_is ttyS1 || { why="/dev/tty_gps is $(readlink -f /dev/tty_gps)"; return 1; }
  is "$(stat -Lc '%G %a' /dev/tty_gps)" "dialout 660" || return
  is "$(stty -F /dev/tty_gps speed)" 115200
}
check the_rule_names_a_port_of_the_board

every_operation_over_an_8250() { every_operation 8250; }
check every_operation_over_an_8250

every_operation_over_a_pl011() {
  name_port ttyAMA0
  port_is ttyAMA0 || { why="/dev/tty_gps is $(readlink -f /dev/tty_gps)"; return 1; }
  every_operation pl011
}
check every_operation_over_a_pl011

# ---- a USB adapter, by the rule as it is shipped

the_shipped_rule_names_a_usb_adapter() {
  rm /etc/udev/rules.d/60-orb-gnss.rules
  udevadm control --reload
  udevadm trigger --subsystem-match=tty
  udevadm settle
  gone || { why="/dev/tty_gps stays without the copy of the rule"; return 1; }
  plug usb || return
  port_is ttyUSB0 || { why="/dev/tty_gps is $(readlink -f /dev/tty_gps)"; return 1; }
  is "$(stat -Lc '%G %a' /dev/tty_gps)" "dialout 660" || return
  is "$(stty -F /dev/tty_gps speed)" 115200 || return
  has "$(udevadm info /dev/ttyUSB0)" "ID_MM_DEVICE_IGNORE=1"
}
check the_shipped_rule_names_a_usb_adapter

every_operation_over_usb() { every_operation usb-serial; }
check every_operation_over_usb

echo "@end checks"
