#!/usr/bin/env bash
# Installs the packages that the build needs on Debian 12 and that are missing. Asks no questions; a second run does nothing.
#   Scripts/install-dependencies.sh [build|bench|lint|tidy|sanitize|models|window]...     build is always included
# models: ONNX Runtime into /usr/local/lib, for the tests that run a model; the program finds it there too.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config ccache git
    libexpat1-dev libicu-dev libsimdjson-dev libsndfile1-dev libpng-dev zlib1g-dev libkissfft-dev
    libavformat-dev libavcodec-dev libavutil-dev libswresample-dev libswscale-dev libcurl4-openssl-dev libssl-dev libsecret-1-dev
    portaudio19-dev libasound2-dev libsoundtouch-dev qt6-base-dev
    libtesseract-dev tesseract-ocr-eng tesseract-ocr-deu fonts-dejavu-core
    libgtest-dev libcpp-httplib-dev openssl libltc-dev libxml2-utils espeak-ng ffmpeg python3 tzdata)
wants_models=""
for group in "$@"; do
    case "$group" in
        build) ;;
        bench) packages+=(libbenchmark-dev libebur128-dev mediainfo) ;;
        lint) packages+=(clang-format) ;;
        tidy) packages+=(clang-19 clang-tidy-19) ;;
        models) packages+=(npm); wants_models=yes ;;
        window) packages+=(xvfb xdotool openbox imagemagick dbus-daemon at-spi2-core gir1.2-atspi-2.0 python3-gi
            pulseaudio pulseaudio-utils libasound2-plugins) ;;
        sanitize) packages+=(clang-19 libclang-rt-19-dev lld-19) ;;
        *) echo "error: unknown package group '$group' (build, bench, lint, tidy, sanitize, models, window)" >&2; exit 2 ;;
    esac
done

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi

# The library alone, from the Node package that contains it (MIT); none of the package's scripts is run.
install_models() {
    local library=/usr/local/lib/libonnxruntime.so.1 machine=x64 folder
    if [ "$(uname -m)" = aarch64 ]; then machine=arm64; fi
    [ -e "$library" ] && return
    folder=$(mktemp -d)
    npm install --prefix "$folder" --ignore-scripts --no-audit --no-fund --silent onnxruntime-node@1.30.0
    $sudo install -m 644 "$folder"/node_modules/onnxruntime-node/bin/napi-v6/linux/$machine/libonnxruntime.so.1 "$library"
    rm -rf "$folder"
}

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    if [ -n "$wants_models" ]; then install_models; fi
    exit 0
fi

echo "Installing: ${missing[*]}"
if [ -n "$sudo" ]; then
    command -v sudo >/dev/null || { echo "error: run as root, or install: ${missing[*]}" >&2; exit 1; }
fi
export DEBIAN_FRONTEND=noninteractive
# Another package manager may be running: wait for it. apt's own time limit covers only its lock for installing.
waited=0
until message=$($sudo env LC_ALL=C apt-get update -qq 2>&1); do
    case "$message" in
        *"Could not get lock"*) ;;
        *) echo "$message" >&2; exit 1 ;;
    esac
    [ $waited -gt 0 ] || echo "Waiting for another package manager, at most 10 minutes: ${message%%$'\n'*}"
    [ $((waited += 3)) -le 600 ] || { echo "error: another package manager still runs; end it, and try again" >&2; exit 1; }
    sleep 3
done
$sudo env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
if [ -n "$wants_models" ]; then install_models; fi
