# Sourced by train and export: finds, or installs, an interpreter that has torch.

# Debian 12's names.
training_packages="python3-torch python3-numpy python3-opencv"

training_can() {
    command -v "$1" >/dev/null && "$1" -c "$2" >/dev/null 2>&1
}

# Prints the interpreter to use: one whose torch sees a GPU before one whose torch does not.
training_python() {
    local python
    for python in python3 /usr/bin/python3; do
        training_can "$python" 'import torch; assert torch.cuda.is_available()' && { echo "$python"; return; }
    done
    for python in /usr/bin/python3 python3; do
        training_can "$python" 'import torch, numpy, cv2' && { echo "$python"; return; }
    done
    training_install >&2 && echo /usr/bin/python3
}

training_install() {
    local sudo=()
    if ! command -v apt-get >/dev/null; then
        echo "Missing: Python with torch (1.13 or later), numpy and OpenCV. Nothing was installed." >&2
        return 1
    fi
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    echo "Installing $training_packages"
    "${sudo[@]}" apt-get -o DPkg::Lock::Timeout=300 -qq update &&
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 -qq install -y \
            --no-install-recommends $training_packages
}
