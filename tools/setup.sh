# shellcheck shell=sh disable=SC2034
# Sourced by the scripts beside it: the set-up that both a build and a test need.

cd "$(dirname "$0")/.." || exit 1

fail() { echo "$(basename "$0"): $*" >&2; exit 1; }

build_tools="g++ cmake ninja-build pkg-config sqlite3 librsvg2-bin qt6-l10n-tools"
build_libraries="qt6-base-dev libsqlite3-dev libavformat-dev libavcodec-dev libswresample-dev
    libavutil-dev libpulse-dev libxcb1-dev"
build_packages="$build_tools $build_libraries"
# The fonts have the letters of every translation.
test_packages="appstream dbus-daemon desktop-file-utils dpkg-dev ffmpeg file fonts-dejavu-core
    fonts-wqy-microhei libfaketime lintian pipewire pipewire-pulse pulseaudio pulseaudio-utils python3
    qt6-translations-l10n tzdata wireplumber xvfb"
# The benchmarks are compiled too.
lint_packages="clang clang-tidy codespell libbenchmark-dev libsqlitecpp-dev shellcheck"
bench_packages="cron ffmpeg libbenchmark-dev libqt6sql6-sqlite libsqlitecpp-dev mpv pipewire-pulse pulseaudio
    pulseaudio-utils python3 qt6-wayland weston wireplumber xvfb"

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

# Where there is no apt-get: says what the build would miss.
check_tools() {
    missing=
    for tool in cmake ninja pkg-config c++ sqlite3 rsvg-convert; do
        command -v $tool >/dev/null || missing="$missing $tool"
    done
    for library in Qt6Widgets Qt6DBus sqlite3 libavformat libavcodec libswresample libavutil libpulse xcb; do
        pkg-config --exists $library 2>/dev/null || missing="$missing $library"
    done
    [ -z "$missing" ] || fail "there is no apt-get here; install these first:$missing"
}

# Installs what is missing of the named packages.
require_packages() {
    command -v apt-get >/dev/null || { check_tools; return; }
    missing=
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    [ "$(id -u)" = 0 ] || command -v sudo >/dev/null ||
        fail "these packages are missing, and to install them takes root or sudo:$missing"
    echo "Installing:$missing"
    log=$(mktemp)
    # shellcheck disable=SC2086  # a list of names
    if ! { as_root apt-get update -q &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing; } >"$log" 2>&1
    then
        tail -n 5 "$log" >&2
        rm -f "$log"
        fail "the packages could not be installed"
    fi
    rm -f "$log"
}

# build PRESET [CMake argument...]: configures and builds it in build/PRESET. Warnings fail only if an argument says so.
build() {
    preset=$1
    shift
    echo "Building $preset"
    log=$(mktemp)
    cmake --preset "$preset" -DBELFRY_WARNINGS_AS_ERRORS=OFF "$@" >"$log" 2>&1 || { cat "$log" >&2; rm -f "$log"; fail "cannot configure $preset"; }
    rm -f "$log"
    cmake --build --preset "$preset" || fail "cannot build $preset"
}
