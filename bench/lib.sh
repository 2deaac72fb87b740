# Shared by bench/run and bench/gib; sourced, never run.
# shellcheck shell=bash disable=SC2034
# shellcheck source=scripts/lib.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/../scripts/lib.sh"

bench=$root/bench
data=$root/build/bench
program=$root/build/release/zanvik
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

print_machine() {
  local compiler
  compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$root/build/release/CMakeCache.txt")
  echo "compiler: $("$compiler" --version | head -n 1), preset release"
  echo "cpu: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $jobs processors"
}
