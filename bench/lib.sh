# Shared by bench/run and bench/gib; sourced, never run.
# shellcheck shell=bash disable=SC2034
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/lib.sh"

bench=$root/bench
data=$root/build/bench
program=$root/build/release/zanvik
# Without odd.evtx: a log made of rare cases says nothing about usual ones.
samples=("$root"/samples/{security,system}.evtx)
export PYTHONDONTWRITEBYTECODE=1

# Prints its argument if that is a whole number above zero.
whole() {
  [[ $1 =~ ^[1-9][0-9]*$ ]] || die "not a whole number above zero: '$1'"
  echo "$1"
}

# Builds the program as shipped, and makes the folder for the logs.
prepare() {
  need_build_tools
  need python3 command -v python3
  install_needed
  build release OFF zanvik
  mkdir -p "$data"
}

# Prints compiler and processor, the first lines of a report.
print_machine() {
  local compiler
  compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$root/build/release/CMakeCache.txt")
  echo "compiler: $("$compiler" --version | head -n 1), preset release"
  echo "cpu: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $jobs processors"
}

# What measure.py does in addition: `all`, `count`, both or nothing.
measure=()

# Makes a log unless it exists, prints what it is made of, compares the listing with it, and measures.
#   $1  log     $2  MiB     $3  chunks to make it of, 0 for all     $4  runs     $5  event ID
#   $6  folder for the listings, or empty     $7...  logs, or folders of logs, to make it of
report() {
  local log=$1 size=$2 chunks=$3 runs=$4 event=$5 keep=$6 found
  shift 6
  python3 "$bench/make_log.py" "$log" "$size" "$chunks" "$@"
  found=$(python3 "$bench/check_output.py" "$program" "$log" "$event" ${keep:+"$keep"})
  # Three numbers, and before them what the check has to say.
  [[ $found != *$'\n'* ]] || printf '%s\n' "${found%$'\n'*}"
  # shellcheck disable=SC2086
  python3 "$bench/measure.py" "$program" "$log" "$runs" "$event" ${found##*$'\n'} "${measure[@]}"
}
