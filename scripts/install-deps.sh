#!/usr/bin/env bash
# Installs what building and testing need (with --build first, what building needs), on Debian 12, and the packages named
# as arguments. Asks apt for nothing when nothing is missing.
set -euo pipefail

packages=(
    g++ cmake ninja-build ccache pkg-config
    # the libraries below this one
    libtag1-dev libb64-dev libfmt-dev nlohmann-json3-dev libsimdjson-dev libcli11-dev
    libpng-dev libjpeg62-turbo-dev libwebp-dev libstb-dev zlib1g-dev
    libpugixml-dev libexpat1-dev libutf8proc-dev
    libasio-dev libcurl4-openssl-dev
)
# The framework, a second compiler for fuzzing, encoders and readers nobody here wrote.
testing=(
    libgtest-dev libgmock-dev libbenchmark-dev clang clang-format libclang-rt-14-dev
    openssl python3 python3-mutagen lame flac ffmpeg libimage-exiftool-perl
)
if [ "${1-}" = --build ]; then
    shift
else
    packages+=("${testing[@]}")
fi
packages+=("$@")

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "installing: ${missing[*]}" >&2
if [ "$(id -u)" -ne 0 ]; then
    echo "$0: these packages are missing and only root can install them: ${missing[*]}" >&2
    exit 1
fi
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq >&2
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
