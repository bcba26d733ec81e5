#!/usr/bin/env bash
# Installs the Debian 12 packages that are missing here; does nothing, and asks for nothing, when all are there.
# Usage: packages.sh [build|test|package|lint]...   (default: build)
set -euo pipefail

build=(g++ cmake ninja-build pkg-config ccache qt6-base-dev
       qt6-tools-dev libqt6opengl6-dev qt6-svg-dev fonts-dejavu-core libsqlitecpp-dev libsqlite3-dev libcurl4-openssl-dev libicu-dev
       nlohmann-json3-dev libfmt-dev libcli11-dev libsodium-dev libgif-dev libboost-dev libssl-dev
       libldap-dev)
test=(libcivetweb-dev civetweb libgtest-dev libgmock-dev libbenchmark-dev sqlite3 openssl kannel xvfb xauth openbox dbus dbus-x11 at-spi2-core
      libatspi2.0-dev tinyproxy-bin libpacparser1 libglib2.0-bin gsettings-desktop-schemas chromium chromium-driver
      slapd ldap-utils)
package=(dpkg-dev file)
lint=(clang-format clang-tidy clang libclang-rt-14-dev git python3 lintian systemd binutils)

wanted=()
for set in "${@:-build}"; do
  case "$set" in
    build) wanted+=("${build[@]}") ;;
    test) wanted+=("${test[@]}") ;;
    package) wanted+=("${package[@]}") ;;
    lint) wanted+=("${lint[@]}") ;;
    *) echo "packages.sh: no package set '$set'" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Please install as root: apt-get install ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing ${#missing[@]} packages: ${missing[*]}"
# The tests run directory servers of their own: the package need not set one up and start it for the whole machine.
case " ${missing[*]} " in
  *" slapd "*) echo "slapd slapd/no_configuration boolean true" | "${as_root[@]}" debconf-set-selections || true ;;
esac
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${as_root[@]}" apt-get update -qq &&
       "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"; } \
     >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
