#!/usr/bin/env bash
# Installs, by Debian package name, whatever the build, tests and (with
# `bench`) benchmarks need and this machine lacks.
set -euo pipefail
packages=(cmake ninja-build g++ make libgtest-dev libbenchmark-dev pkg-config binutils)
if [ "${1:-}" = "bench" ]; then
  packages+=(libfftw3-dev libopenblas-dev liblapacke-dev)
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO=sudo
echo "installing: ${missing[*]}"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
