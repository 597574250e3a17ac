#!/usr/bin/env bash
# Installs the Debian packages needed to build and test OrvoBasic.
# With --fuzz, also what `make fuzz` needs (clang and its libFuzzer runtime).
# With --bench, also the interpreters `make bench` times ours against.
# Idempotent: asks dpkg which packages are missing and touches apt only then,
# so a second run on a ready machine prints one line and changes nothing.
set -euo pipefail

# Every system package the build, the tests and the tools need. Add new ones here.
PACKAGES="g++ make cmake ninja-build libgtest-dev libgmock-dev pkg-config python3 libffi-dev python3-dbfread locales libedit-dev nettle-dev qt6-base-dev xvfb xauth fonts-dejavu-core libcanberra-dev"
# Only for `make fuzz`: the fuzz targets are built with clang's libFuzzer.
FUZZ_PACKAGES="clang libclang-rt-14-dev"
# Only for `make bench`: the interpreters the benchmarks compare with.
BENCH_PACKAGES="lua5.4 yabasic brandy"

# Prints the packages of $PACKAGES that dpkg does not report as installed.
missing_packages() {
  local pkg status
  for pkg in $PACKAGES; do
    status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
    if [[ "$status" != "install ok installed" ]]; then
      printf '%s\n' "$pkg"
    fi
  done
}

# Runs a command as root: directly when we are root, else through sudo when it exists.
as_root() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null 2>&1; then
    sudo "$@"
  else
    echo "install-deps: need root (or sudo) to run: $*" >&2
    exit 1
  fi
}

# A German locale lets the tests check that number formatting ignores the
# user's LC_NUMERIC; generated once, only when missing.
ensure_test_locale() {
  if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
    echo "install-deps: generating the de_DE.UTF-8 locale for the tests"
    as_root localedef -i de_DE -f UTF-8 de_DE.UTF-8 || echo "install-deps: could not generate de_DE.UTF-8 (the locale test will skip)"
  fi
}

main() {
  if [[ "${1:-}" == "--fuzz" ]]; then
    PACKAGES="$PACKAGES $FUZZ_PACKAGES"
  fi
  if [[ "${1:-}" == "--bench" ]]; then
    PACKAGES="$PACKAGES $BENCH_PACKAGES"
  fi
  local missing
  missing=$(missing_packages | tr '\n' ' ')
  missing=${missing% }
  if [[ -z "$missing" ]]; then
    ensure_test_locale
    echo "install-deps: all packages already installed, nothing to do."
    return 0
  fi
  echo "install-deps: installing: $missing"
  # sudo drops the environment, so the non-interactive front end goes through env.
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  # shellcheck disable=SC2086  # the list is meant to split into words
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends $missing
  ensure_test_locale
  echo "install-deps: done."
}

main "$@"
