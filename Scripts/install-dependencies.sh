#!/usr/bin/env bash
# Installs what the build needs on Debian 12 and is not there yet. Asks nothing; does nothing on a second run.
#   Scripts/install-dependencies.sh [build|bench|lint|sanitize]...     build is always included
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config ccache git
    libexpat1-dev libicu-dev libsimdjson-dev libsndfile1-dev libpng-dev libkissfft-dev
    libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libswscale-dev libcurl4-openssl-dev libssl-dev libsecret-1-dev
    portaudio19-dev libasound2-dev libsoundtouch-dev
    libtesseract-dev tesseract-ocr-eng tesseract-ocr-deu fonts-dejavu-core
    libgtest-dev libcpp-httplib-dev openssl libltc-dev libxml2-utils espeak-ng ffmpeg python3 tzdata)
for group in "$@"; do
    case "$group" in
        build) ;;
        bench) packages+=(libbenchmark-dev libebur128-dev mediainfo) ;;
        lint) packages+=(clang-format clang-tidy) ;;
        sanitize) packages+=(clang-19 libclang-rt-19-dev) ;;
        *) echo "error: unknown package group '$group' (build, bench, lint, sanitize)" >&2; exit 2 ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "error: run as root, or install: ${missing[*]}" >&2; exit 1; }
    sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
# Another package manager may be at work: wait for it. The time limit of apt covers its lock for installing alone.
until message=$($sudo apt-get update -qq 2>&1); do
    case "$message" in
        *"Could not get lock"*) sleep 3 ;;
        *) echo "$message" >&2; exit 1 ;;
    esac
done
$sudo env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
