# Sourced by run, test, bench and .ci/run: what they need of the machine, and the builds.
# Expects the working directory to be the root of the repository.

# Debian 12's names. A profile is a list of packages for one purpose.
stillwick_packages() {
    case $1 in
        build) echo g++ cmake ninja-build ccache pkg-config \
            qt6-base-dev qt6-svg-dev qt6-translations-l10n qt6-multimedia-dev libgl1-mesa-dev qcoro-qt6-dev \
            libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev libzimg-dev \
            libpng-dev libdeflate-dev libopencv-core-dev libopencv-imgproc-dev ;;
        test) echo libgtest-dev libgmock-dev ffmpeg python3 fonts-dejavu-core pulseaudio pulseaudio-utils \
            dbus-daemon dbus-bin strace \
            xvfb openbox xdotool x11-utils x11-xkb-utils at-spi2-core python3-gi gir1.2-atspi-2.0 ;;
        check) echo clang-format clang-tidy-16 clang-16 libclang-rt-16-dev ;;
        package) echo dpkg-dev gzip git ;;
        trial) echo debootstrap lintian desktop-file-utils appstream shared-mime-info man-db xvfb xdotool ;;
        bench) echo ffmpeg mpv libffms2-dev python3 python3-opencv python3-scipy xvfb ;;
        *) echo "setup.sh: no profile '$1'" >&2; return 1 ;;
    esac
}

# stillwick_install PROFILE…: installs what is missing of these profiles.
stillwick_install() {
    local wanted missing=() package
    wanted=$(for profile in "$@"; do stillwick_packages "$profile"; done) || return
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        stillwick_require_tools
        return
    fi
    for package in $wanted; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing ${missing[*]}" >&2
    local sudo=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "These packages are missing, and only root can install them: ${missing[*]}" >&2; return 1; }
        sudo=(sudo)
    fi
    "${sudo[@]}" apt-get -o DPkg::Lock::Timeout=300 -qq update >&2 &&
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -qq install -y \
            --no-install-recommends "${missing[@]}" >&2
}

# On another system: says plainly what is missing, by what can be seen from outside a package manager.
stillwick_require_tools() {
    local tool module missing=()
    for tool in g++ cmake ninja pkg-config; do
        command -v "$tool" >/dev/null || missing+=("$tool")
    done
    if command -v pkg-config >/dev/null; then
        for module in Qt6Core Qt6Gui Qt6Widgets Qt6Svg Qt6Multimedia libavformat libavcodec libavutil libswscale \
            libswresample zimg libpng libdeflate; do
            pkg-config --exists "$module" || missing+=("$module")
        done
    fi
    [ ${#missing[@]} -eq 0 ] && return
    echo "This is not a Debian system, so nothing was installed. Missing: ${missing[*]}." >&2
    echo "Also needed: QCoro 0.8 for Qt 6, OpenCV 4.6 (core, imgproc), a C++20 compiler (GCC 12)." >&2
    return 1
}

# stillwick_build PRESET [-DNAME=VALUE…] -- [TARGET…]: configures where needed, builds; quiet when all
# goes well.
stillwick_build() {
    local preset=$1 settings=() log status=0
    shift
    while [ $# -gt 0 ] && [ "$1" != -- ]; do settings+=("$1"); shift; done
    [ "${1-}" = -- ] && shift
    log=build/$preset.log
    mkdir -p build
    if ! stillwick_is_configured "$preset" "${settings[@]}"; then
        cmake --preset "$preset" "${settings[@]}" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
    fi
    if [ -t 2 ] && ! ninja -C "build/$preset" -n "$@" 2>/dev/null | grep -q 'no work to do'; then
        echo "Building (preset $preset)…" >&2
    fi
    cmake --build "build/$preset" ${*:+--target "$@"} >"$log" 2>&1 || status=$?
    [ $status -eq 0 ] || cat "$log" >&2
    return $status
}

stillwick_is_configured() {
    local cache=build/$1/CMakeCache.txt setting
    [ -f "build/$1/build.ninja" ] || return 1
    shift
    for setting in "$@"; do
        setting=${setting#-D}
        grep -q "^${setting%%=*}:[A-Z]*=${setting#*=}\$" "$cache" || return 1
    done
}
