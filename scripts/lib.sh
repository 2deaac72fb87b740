# Shared by the scripts of this folder, of bench/ and of .ci/; sourced, never run.
#
# What it gives: `root`, the checkout's folder; `need` and `install_needed`, which see to Debian
# packages; `build`, which configures and builds a preset. All of them are silent when all is
# well; what a tool wrote is shown only when the tool failed. Nothing is written outside build/,
# except by apt-get when a package is missing.
# shellcheck shell=bash

set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
missing_packages=()
jobs=$(nproc)
readonly root jobs

say() { printf '%s\n' "$*" >&2; }
die() { say "zanvik: $*"; exit 1; }

# Runs a command with its output kept aside; on failure shows that output and ends the script.
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

# Notes a package as missing unless its test holds. The test is a command rather than a question
# to dpkg, so that tools which were installed in another way are good enough.
#   $1  package     $2...  the test
need() {
  local package=$1
  shift
  "$@" >/dev/null 2>&1 || missing_packages+=("$package")
}

have_compiler() { command -v "${CXX:-c++}"; }

# Whether the compiler finds the header $1.
have_header() { have_compiler && printf '#include <%s>\n' "$1" | "${CXX:-c++}" -E -x c++ -; }

have_gtest() { dpkg -s libgtest-dev || have_header gtest/gtest.h; }

need_build_tools() {
  need g++ have_compiler
  need cmake command -v cmake
  need ninja-build command -v ninja
  need libcli11-dev have_header CLI/CLI.hpp
  need libyaml-cpp-dev have_header yaml-cpp/parser.h
  need libpcre2-dev have_header pcre2.h
  need zlib1g-dev have_header zlib.h
  need libssl-dev have_header openssl/evp.h
  # Optional, and for some processors only.
  if [[ $(uname -m) == x86_64 ]]; then need libhyperscan-dev have_header hs/hs.h; fi
}

# Installs what `need` found missing, as root or by sudo; says what is missing when it cannot.
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
    # Asked before the quiet part, where the question would not be seen.
    "${as_root[@]}" true || die "missing here, and sudo was refused: apt-get install $list"
  fi
  quietly "installing $list" install_packages "${as_root[@]}"
  missing_packages=()
}

#   $@  what to put before a command to run it as root; may be empty
install_packages() {
  local apt=("$@" env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
  # One source that does not answer need not be the one that has the packages.
  "${apt[@]}" update || true
  "${apt[@]}" install --no-install-recommends "${missing_packages[@]}"
}

# True when the cache of preset $1 has the line $2.
cache_says() { grep -qsxF -- "$2" "$root/build/$1/CMakeCache.txt"; }

# Configures and builds a preset in build/<preset>.
#   $1  preset     $2  ON or OFF: whether the tests are wanted     $3...  targets; none means all
build() {
  local preset=$1 tests=$2 target fresh=()
  shift 2
  local targets=()
  for target in "$@"; do targets+=(--target "$target"); done
  # A folder set up for the tests stays so; turning back and forth would build things anew.
  if cache_says "$preset" ZANVIK_TESTS:BOOL=ON; then tests=ON; fi
  # cmake refuses the cache of a checkout that was copied or moved, or of another generator.
  if ! cache_says "$preset" "CMAKE_HOME_DIRECTORY:INTERNAL=$root" ||
    ! cache_says "$preset" CMAKE_GENERATOR:INTERNAL=Ninja; then
    fresh=(--fresh)
  fi
  # Compilers keep their temporary files in the build folder too.
  export TMPDIR=$root/build/$preset/tmp
  mkdir -p "$TMPDIR"
  cd "$root"
  quietly "configuring" cmake "${fresh[@]}" --preset "$preset" -DZANVIK_TESTS="$tests"
  quietly "building" cmake --build --preset "$preset" -j "$jobs" "${targets[@]}"
  cd - >/dev/null
}
