#!/bin/sh
# Runs the programs that make every call which orb-sim's preloaded library wraps, held by it. Their
# calls take variable arguments in the machine's own way.
#   held_calls.sh PRELOADED_LIBRARY PROGRAM_FOLDER EMULATOR...
set -eu
library=$1 programs=$2
shift 2

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
device=/nonexistent-orb-sim/device other=/nonexistent-orb-sim/other

# held PROGRAM ARGUMENT...: must succeed silently.
held() {
  program=$1
  shift
  status=0
  "$emulate" -E "LD_PRELOAD=$library" "$programs/$program" "$@" > "$folder/said" 2>&1 || status=$?
  if [ "$status" != 0 ] || [ -s "$folder/said" ]; then
    head "$folder/said"
    echo "$program: exit status $status" >&2
    exit 1
  fi
}

emulate=$folder/emulate
{
  echo '#!/bin/sh'
  printf 'exec'
  printf " '%s'" "$@"
  echo ' "$@"'
} > "$emulate"
chmod +x "$emulate"

export ORB_SIM_PATHS="$device=$folder/target:$other=$folder/other"
for program in file_calls file_calls_fortified; do
  held "$program" "$device" "$other"
done
held file_streams "$device"
[ "$(cat "$folder/target")" = stream ]

cat > "$folder/registers" << END
port expander at 0x21   port 0   port 1
0 1  input                  ff       ff
2 3  output                 ff       ff
4 5  polarity               00       00
6 7  direction              ff       ff
next register                         0
antenna supply               not driven
END
ln -s registers "$folder/bus.registers"
python3 -c 'import os, stat, sys; os.mknod(sys.argv[1], stat.S_IFSOCK | 0o600)' "$folder/bus"
export ORB_SIM_PATHS="$device=$folder/bus" ORB_SIM_I2C="$folder/bus"
held i2c_calls "$device"
grep -q '^2 3  output *12 *34$' "$folder/registers"

# Without the library there is no such device.
if "$emulate" "$programs/file_calls" "$device" "$other" 2> "$folder/said"; then exit 1; fi
grep -q '^open: No such file or directory$' "$folder/said"
