#!/usr/bin/env bash
# Installs the Debian packages the build needs, when any is missing.
# Usage: scripts/install-deps.sh [test|bench|demo|fuzz|docs]...
set -euo pipefail

packages=(cmake ninja-build g++ g++-multilib googletest pkgconf binutils qemu-user nlohmann-json3-dev)
demo=(libcairo2-dev fonts-dejavu-core pybind11-dev python3-dev python3-numpy python3-pytest python3-matplotlib)
for need in "$@"; do
  case "$need" in
    bench) packages+=(libbenchmark-dev lib2geom-dev libboost-dev) ;;
    fuzz) packages+=(clang libclang-rt-dev) ;;
    demo) packages+=("${demo[@]}") ;;
    test) packages+=("${demo[@]}" doxygen) ;;
    docs) packages+=(doxygen) ;;
    *) echo "install-deps: unknown set '$need'" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "install-deps: missing Debian packages: ${missing[*]}" >&2
  echo "install-deps: run as root, or: sudo apt-get install ${missing[*]}" >&2
  exit 1
fi
echo "install-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
