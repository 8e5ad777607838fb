#!/bin/bash
# Runs on the emulated machine, started by systemd, and reports over the console. A line that begins
# with @ is for run.py: a result, something seen, or what is to be done from outside.
set -u

client=/usr/lib/orb-target/client
log=/var/log/orbset-errors.log
identity=/tmp/orbitekChip-info.txt
inventory=(org.orb_gnss.Inventory1 /org/orb_gnss/Inventory1 org.orb_gnss.Inventory1)
why=
chosen=$(sed -n 's/.* checks=//p' /proc/cmdline)

echo "@begin checks"

now() { echo $((${EPOCHREALTIME/./} / 1000)); } # milliseconds
note() { echo "@note $*"; }
please() { echo "@please $*"; }

# check NAME: runs the function of that name, which returns 1 where it is not so.
check() {
  [[ $1 =~ $chosen ]] || return
  why=
  local start
  start=$(now)
  if "$1"; then
    echo "@ok $1 ($(($(now) - start)) ms)"
  else
    echo "@FAILED $1: $why"
  fi
  end
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

# plug RECEIVER, unplug: the USB adapter, where it is not so yet; the receiver is what is behind it.
plugged=
plug() {
  [ "$plugged" != "$1" ] || return 0
  unplug || return
  plugged=$1
  please plug "$1"
  wait_until 60 test -e /dev/tty_gps && udevadm settle
}
unplug() {
  [ -n "$plugged" ] || return 0
  plugged=
  please unplug
  wait_until 60 gone && udevadm settle
}
gone() { [ ! -e /dev/tty_gps ]; }

# start WHAT: a client that asks once for each call of ask. said N: the answer that it gave N-th.
start() {
  rm -f /run/questions
  mkfifo /run/questions
  $client "$1" < /run/questions > /dev/null 2> /run/answers &
  asked=$!
  exec 3> /run/questions
}
ask() { echo >&3; }
said() { grep result /run/answers | sed -n "$1p"; }
has_said() { [ -n "$(said "$1")" ]; }
asked=
end() {
  [ -n "$asked" ] || return 0
  exec 3>&-
  kill "$asked" 2> /dev/null
  wait "$asked" 2> /dev/null
  asked=
}
# waits: a client has the port open, and has had time to ask.
waits() { wait_until 60 port_is_open && sleep 2; }
port_is_open() { ls -l /proc/[0-9]*/fd 2> /dev/null | grep /dev/ttyUSB; }
processor_time_of() { cut -d ' ' -f 14,15 "/proc/$1/stat" | sed 's/ / + /'; } # hundredths

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
  wait_until 60 inventory_says 47205318-002 || return
  cp /root/inventory.toml /etc/orb-gnss
  systemctl reload orb-inventoryd
  wait_until 60 inventory_says 47205318-001
}
inventory_says() { busctl call "${inventory[@]}" GetSystemRecord us 1 HardwareSetId | grep "$1"; }
check a_reload_reads_the_file_anew

a_crashed_service_comes_back() {
  local process
  process=$(systemctl show -P MainPID orb-inventoryd)
  kill -SEGV "$process"
  wait_until 60 restarted "$process" || return
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
  run $client ask <<< ""
  has "$output" "result 8 after" || return
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
  rm -f /etc/udev/rules.d/60-orb-gnss.rules
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

every_operation_over_usb() { plug usb && every_operation usb-serial; }
check every_operation_over_usb

every_operation_with_split_and_late_answers() {
  plug split || return
  every_operation "answers in pieces, or late"
}
check every_operation_with_split_and_late_answers

who_may_use_the_port() {
  plug usb || return
  run setpriv --reuid=65534 --regid=20 --clear-groups $client ask <<< ""
  has "$output" "result 0 after" || return
  run setpriv --reuid=65534 --regid=65534 --clear-groups $client ask <<< ""
  has "$output" "result 8 after"
}
check who_may_use_the_port

# A client that waits for the name must not speak before the port has its speed.
the_name_appears_when_the_speed_is_set() {
  local i
  start ask
  for i in 1 2 3 4 5; do
    unplug || return
    plugged=usb
    please plug usb
    until [ -e /dev/tty_gps ]; do :; done
    ask
    wait_until 60 has_said "$i" || return
    has "$(said "$i")" "result 0" || return
    udevadm settle
  done
}
check the_name_appears_when_the_speed_is_set

# ---- the adapter is pulled

pulled_between_calls() {
  plug usb || return
  start ask
  ask && wait_until 60 has_said 1 && unplug || return
  ask && wait_until 60 has_said 2 && plug usb || return
  ask && wait_until 60 has_said 3
  note "a client, before: $(said 1); pulled: $(said 2); plugged in again: $(said 3)"
  has "$(said 1)" "result 0" && has "$(said 2)" "result 8" && has "$(said 3)" "result 0"
}
check pulled_between_calls

# A call without a deadline does not return. It costs next to no processor time, and holds up
# nobody else.
pulled_during_an_exchange() {
  local before after
  plug late || return
  start ask
  ask && waits && unplug || return
  before=$(($(processor_time_of "$asked")))
  sleep 10
  after=$(($(processor_time_of "$asked")))
  note "a client, pulled in a wait: $(((after - before) * 10)) ms of the processor in 10 s of silence"
  [ -e "/proc/$asked" ] || { why="it has ended"; return 1; }
  is "$(said 1)" "" || return
  within $((after - before)) 0 100 || return
  plug usb || return
  note "plugged in again while that client waits, it is $(readlink -f /dev/tty_gps)"
  run $client ask <<< ""
  has "$output" "result 0 after" || return
  is "$(said 1)" "" || return
  end
  unplug && plug usb || return
  port_is ttyUSB0 || { why="/dev/tty_gps is $(readlink -f /dev/tty_gps)"; return 1; }
}
check pulled_during_an_exchange

# Each call returns, and the controller goes on when the adapter is back.
a_supervised_controller_survives_pulls() {
  plug usb || return
  start supervise
  ask && wait_until 60 has_said 1 && unplug || return
  ask && wait_until 60 has_said 2 && plug late || return
  ask && waits && unplug && wait_until 60 has_said 3 && plug usb || return
  ask && wait_until 60 has_said 4
  note "supervised, before: $(said 1)"
  note "supervised, pulled: $(said 2)"
  note "supervised, pulled in a wait: $(said 3)"
  note "supervised, plugged in again: $(said 4)"
  has "$(said 1)" "result 0" && has "$(said 2)" "result 8" && has "$(said 3)" "result 4" &&
    has "$(said 3)" "cannot be opened" && has "$(said 4)" "result 0" || return
  [ ! -e /run/lock/LCK..tty_gps ] || { why="the lock stays"; return 1; }
}
check a_supervised_controller_survives_pulls

orbctl_says_that_the_adapter_was_pulled() {
  local asking
  plug late || return
  orbctl --deadline 10 get elevation-limit > /run/said 2>&1 &
  asking=$!
  waits && unplug || return
  wait $asking
  status=$?
  note "orbctl, pulled in a wait: status $status: $(tr '\n' '|' < /run/said)"
  is $status 3 || return
  has "$(< /run/said)" "/dev/tty_gps" || return
  plug usb || return
  run orbctl get elevation-limit
  note "orbctl, plugged in again: status $status after $took ms: $output"
  is "$status" 0 || return
  is "$(pgrep -c orb-gnss-worker)" 0
}
check orbctl_says_that_the_adapter_was_pulled

doctor_finds_nothing_wrong() {
  plug usb || return
  run orbctl doctor
  note "doctor took $took ms"
  is "$status" 0 || { echo "$output"; return 1; }
}
check doctor_finds_nothing_wrong

# ---- without the device

the_simulated_device_runs_on_this_machine() {
  run orbctl --simulate get elevation-limit
  note "orbctl --simulate took $took ms"
  is "$status" 0 && is "$output" "5 degrees"
}
check the_simulated_device_runs_on_this_machine

# ---- the logs and the identity file

# Without a port each call is a line in the log.
logs_are_rotated_under_a_running_client() {
  local lines
  unplug || return
  rm -f $log*
  start ask
  ask && ask && ask && wait_until 60 has_said 3 || return
  lines=$(wc -l < $log)
  ((lines >= 3)) || { why="$lines lines in the log"; return 1; }
  logrotate --force --state /run/logrotate /etc/logrotate.d/orb-gnss ||
    { why="logrotate: $?"; return 1; }
  is "$(stat -c %s $log)" 0 || return
  is "$(zcat $log.1.gz | wc -l)" "$lines" || return
  ask && ask && wait_until 60 has_said 5 || return
  is "$(wc -l < $log)" 2 || return
  is "$(tr -d '\0' < $log | wc -c)" "$(wc -c < $log)"
}
check logs_are_rotated_under_a_running_client

# planted_link TARGET: /tmp's file is another user's link when it is to be written.
planted_link() {
  rm -f $identity
  setpriv --reuid=65534 --clear-groups ln -s "$1" $identity
  run $client identity
  is "$status" 0 && is "$(readlink $identity)" "$1"
}

identity_file() {
  echo "$1" > /proc/sys/fs/protected_symlinks
  is "$(stat -c %a /tmp)" 1777 || return
  rm -f $identity
  run $client identity
  is "$status" 0 && is "$(stat -c '%F %U' $identity)" "regular file root" || return
  note "protected_symlinks $1: the identity file: $(tr '\n' '|' < $identity)"
  echo precious > /root/precious
  planted_link /root/precious && is "$(< /root/precious)" precious || return
  planted_link /root/missing || return
  [ ! -e /root/missing ] || { why="a file was made through a dangling link"; return 1; }
  rm -f $identity
}
identity_file_with_protected_links() { plug usb && identity_file 1; }
check identity_file_with_protected_links
identity_file_without_protected_links() { plug usb && identity_file 0; }
check identity_file_without_protected_links

# ---- I2C

# switch_antenna BUS: on and off, among pins of others, which keep what they have.
switch_antenna() {
  i2ctransfer -y 0 w3@0x21 2 0x5a 0xa4 && i2ctransfer -y 0 w3@0x21 6 0xf0 0x0f ||
    { why="i2ctransfer"; return 1; }
  please expect-transfers "$1" "w 02 5a a4; w 06 f0 0f"
  run orbctl antenna-power on
  is "$status" 0 || { why="$why: $output"; return 1; }
  please expect-transfers "$1" "w 06 r 2; w 06 f0 0e; w 02 r 2; w 02 5a a5"
  run orbctl antenna-power off
  is "$status" 0 || { why="$why: $output"; return 1; }
  is "$(i2ctransfer -y 0 w1@0x21 2 r2)" "0x5a 0xa4" || return
  is "$(i2ctransfer -y 0 w1@0x21 6 r2)" "0xf0 0x0e" || return
  please expect-transfers "$1" "w 06 r 2; w 06 f0 0e; w 02 r 2; w 02 5a a4; w 02 r 2; w 06 r 2"
}

antenna_power_over_plain_i2c() {
  plug usb || return
  modprobe i2c-dev && please attach plain && wait_until 60 test -e /dev/i2c-0 || return
  note "i2c-0 is $(< /sys/class/i2c-adapter/i2c-0/name)"
  switch_antenna plain
}
check antenna_power_over_plain_i2c

nothing_is_written_where_the_expander_does_not_answer() {
  please mute plain
  wait_until 60 expander_is_mute || return
  please forget-transfers plain
  run orbctl antenna-power on
  note "orbctl antenna-power without an expander: status $status: $output"
  please expect-transfers plain "w 06 nak; w 02 nak"
  please unmute plain
  wait_until 60 expander_answers || return
  is "$(i2ctransfer -y 0 w1@0x21 2 r2)" "0x5a 0xa4"
}
expander_is_mute() { ! i2ctransfer -y 0 w1@0x21 2 r2; }
expander_answers() { i2ctransfer -y 0 w1@0x21 2 r2; }
check nothing_is_written_where_the_expander_does_not_answer

antenna_power_over_smbus() {
  please detach plain
  wait_until 60 test ! -e /dev/i2c-0 || return
  run orbctl antenna-power on
  note "orbctl antenna-power without a bus: status $status: $output"
  please attach smbus && wait_until 60 test -e /dev/i2c-0 || return
  has "$(i2cdetect -F 0 | tr -s ' ')" "I2C no" || return
  switch_antenna_over_smbus
}

switch_antenna_over_smbus() {
  i2cset -y 0 0x21 2 0x5a 0xa4 i && i2cset -y 0 0x21 6 0xf0 0x0f i || { why="i2cset"; return 1; }
  please expect-transfers smbus "w 02 5a a4; w 06 f0 0f"
  run orbctl antenna-power on
  is "$status" 0 || { why="$why: $output"; return 1; }
  please expect-transfers smbus "w 06 r 2; w 06 f0 0e; w 02 r 2; w 02 5a a5"
}
check antenna_power_over_smbus

echo "@end checks"
sleep 0.2 # the console is written out
