# Shared by bench/run and bench/gib; sourced, never run.
# shellcheck shell=bash disable=SC2034
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/lib.sh"

bench=$root/bench
data=$root/build/bench
program=$root/build/release/zanvik
# odd.evtx stays out: a log made of what is rare tells nothing about the usual.
samples=("$root"/samples/{security,system}.evtx)
export PYTHONDONTWRITEBYTECODE=1

# Prints its argument when that is a whole number above zero.
whole() {
  [[ $1 =~ ^[1-9][0-9]*$ ]] || die "not a whole number above zero: '$1'"
  echo "$1"
}

# The program as it is shipped, and the folder for the logs.
prepare() {
  need_build_tools
  need python3 command -v python3
  install_needed
  build release OFF zanvik
  mkdir -p "$data"
}

# Compiler and processor, the first lines of a report.
print_machine() {
  local compiler
  compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$root/build/release/CMakeCache.txt")
  echo "compiler: $("$compiler" --version | head -n 1), preset release"
  echo "cpu: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $jobs processors"
}

# Set to `all` by a script that wants the runs of all forms and reports.
all=''

# Makes the log unless it is there, holds the listing against it, and times.
#   $1  log     $2  MiB     $3  runs     $4  event ID     $5  folder for the listings, or empty
#   $6...  logs, or folders of logs, to make it of
report() {
  local log=$1 size=$2 runs=$3 event=$4 keep=$5 found
  shift 5
  python3 "$bench/make_log.py" "$log" "$size" "$@"
  found=$(python3 "$bench/check_output.py" "$program" "$log" "$event" ${keep:+"$keep"})
  # Three numbers, and before them what the check has to say.
  [[ $found != *$'\n'* ]] || printf '%s\n' "${found%$'\n'*}"
  # shellcheck disable=SC2086
  python3 "$bench/measure.py" "$program" "$log" "$runs" "$event" ${found##*$'\n'} $all
}
