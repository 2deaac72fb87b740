# Shared by the scripts of this folder, of bench/ and of .ci/; sourced, never run.
#
# It provides `root`, the checkout's folder; `need` and `install_needed`, which install missing
# Debian packages; and `build`, which configures and builds a preset. They print a line on standard
# error when something takes long. The output of a tool is shown only if the tool failed. Nothing is
# written outside build/, except by apt-get when a package is missing.
# shellcheck shell=bash

set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
missing_packages=()
jobs=$(nproc)
readonly root jobs

say() { printf '%s\n' "$*" >&2; }
die() { say "zanvik: $*"; exit 1; }

# Runs a command and hides its output; on failure shows the output and ends the script.
#   $1  what is being done, for the message     $2...  the command
quietly() {
  local what=$1 output status=0
  shift
  output=$("$@" </dev/null 2>&1) || status=$?
  if ((status != 0)); then
    printf '%s\n' "$output" >&2
    die "$what failed (status $status): $*"
  fi
}

# Notes a package as missing unless its test succeeds. The test is a command, not a query to dpkg,
# so that tools installed in another way are accepted.
#   $1  package     $2...  the test
need() {
  local package=$1
  shift
  "$@" >/dev/null 2>&1 || missing_packages+=("$package")
}

have_compiler() { command -v "${CXX:-c++}"; }

# Whether the compiler finds the header $1. PCRE2's wants to know the width of characters.
have_header() {
  have_compiler &&
    printf '#include <%s>\n' "$1" | "${CXX:-c++}" -DPCRE2_CODE_UNIT_WIDTH=8 -E -x c++ -
}

have_gtest() { dpkg -s libgtest-dev || have_header gtest/gtest.h; }

need_build_tools() {
  need g++ have_compiler
  need cmake command -v cmake
  need ninja-build command -v ninja
  need libcli11-dev have_header CLI/CLI.hpp
  need libyaml-cpp-dev have_header yaml-cpp/parser.h
  # pcre2.h itself wants to be told the width of characters.
  need libpcre2-dev have_header pcre2posix.h
  need zlib1g-dev have_header zlib.h
  need libssl-dev have_header openssl/evp.h
  need libsqlite3-dev have_header sqlite3.h
  need libtsk-dev have_header tsk/libtsk.h
  need libewf-dev have_header libewf.h
  need libvshadow-dev have_header libvshadow.h
  need libbfio-dev have_header libbfio.h
  # Optional, and only for some processors.
  if [[ $(uname -m) == x86_64 ]]; then need libhyperscan-dev have_header hs/hs.h; fi
}

# Installs what `need` found missing, as root or with sudo; if it cannot, says what is missing.
install_needed() {
  ((${#missing_packages[@]})) || return 0
  local as_root=() list="${missing_packages[*]}"
  command -v apt-get >/dev/null ||
    die "missing here, and there is no apt-get to install it: $list (names of Debian packages)"
  if ((EUID != 0)); then
    command -v sudo >/dev/null ||
      die "missing here, and only root can install it: apt-get install $list"
    as_root=(sudo)
    # Without a terminal nobody can type a password.
    [[ -t 0 ]] || as_root+=(-n)
    # Ask before the quiet part, which would hide the question.
    "${as_root[@]}" true || die "missing here, and sudo was refused: apt-get install $list"
  fi
  say "installing $list"
  quietly "installing $list" install_packages "${as_root[@]}"
  missing_packages=()
}

#   $@  the words to put before a command to run it as root; may be empty
install_packages() {
  local apt=("$@" env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
  # A source that does not answer may not be the one with the packages.
  "${apt[@]}" update || true
  "${apt[@]}" install --no-install-recommends "${missing_packages[@]}"
}

# True when the cache of preset $1 has the line $2.
cache_says() { grep -qsxF -- "$2" "$root/build/$1/CMakeCache.txt"; }

# How long a build takes, for the message. Measured without ccache.
build_time() {
  if [[ -e $root/build/$1/build.ninja ]]; then
    echo "only what has changed since the last build"
  elif [[ $2 == ON || $1 == fuzz ]]; then
    echo "this takes several minutes on two cores"
  else
    echo "this takes one to two minutes on two cores"
  fi
}

# Configures and builds a preset in build/<preset>.
#   $1  preset     $2  ON or OFF: with the tests or without     $3...  targets; none means all
build() {
  local preset=$1 tests=$2 target fresh=()
  shift 2
  local targets=()
  for target in "$@"; do targets+=(--target "$target"); done
  # A folder that was set up with the tests stays so; switching would rebuild much.
  if cache_says "$preset" ZANVIK_TESTS:BOOL=ON; then tests=ON; fi
  # CMake refuses the cache of a checkout that was copied or moved, or of another generator.
  if ! cache_says "$preset" "CMAKE_HOME_DIRECTORY:INTERNAL=$root" ||
    ! cache_says "$preset" CMAKE_GENERATOR:INTERNAL=Ninja; then
    fresh=(--fresh)
  fi
  # Compilers keep their temporary files in the build folder too.
  export TMPDIR=$root/build/$preset/tmp
  mkdir -p "$TMPDIR"
  cd "$root"
  say "building $preset in build/$preset; $(build_time "$preset" "$tests")"
  quietly "configuring" cmake "${fresh[@]}" --preset "$preset" -DZANVIK_TESTS="$tests"
  quietly "building" cmake --build --preset "$preset" -j "$jobs" "${targets[@]}"
  cd - >/dev/null
}
