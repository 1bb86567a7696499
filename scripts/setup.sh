# Sourced by ./run, ./test, ./fuzz, ./package and scripts/pictures: installs the Debian packages that are missing and says so.
# Needs bash; runs as root or with sudo.

say() { printf '\n== %s\n' "$*"; }
die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

build_packages=(
    g++ cmake ninja-build pkg-config
    libssl-dev uuid-dev nlohmann-json3-dev
    libcurl4-openssl-dev libudev-dev
    libcpp-httplib-dev ca-certificates
    qt6-base-dev qt6-wayland libxcb1-dev
    lowdown
)
test_packages=(
    clang libclang-rt-dev llvm
    libgtest-dev openssl coreutils
    desktop-file-utils appstream libxml2-utils groff-base
    dbus python3-dbusmock xvfb fonts-dejavu-core
)
# Formats, checks and the fuzzing engine differ from version to version: these, or none.
format_packages=(clang-14 clang-format-14 clang-tidy-14)
fuzz_packages=(clang-14 libclang-rt-14-dev llvm-14)
kernel_test_packages=(qemu-system-x86 busybox-static cpio kmod udev systemd at-spi2-core)
packaging_packages=(dpkg-dev lintian)
picture_packages=(xvfb xauth openbox dbus xfce4-panel xfconf fonts-dejavu-core)

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        die "installing packages needs root or sudo: $*"
    fi
}

is_installed() { [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# missing_of PACKAGE... : prints those that are not there yet.
missing_of() {
    local package
    for package in "$@"; do
        is_installed "$package" || printf '%s\n' "$package"
    done
}

# are_known PACKAGE... : whether this system has, or could install, all of them.
are_known() {
    local package
    for package in "$@"; do
        is_installed "$package" || apt-cache show "$package" >/dev/null 2>&1 || return
    done
}

# quietly COMMAND... : what it prints is shown only if it fails.
quietly() {
    local output
    output=$("$@" 2>&1) || {
        printf '%s\n' "$output" >&2
        return 1
    }
}

install_packages() {
    say "Installing packages: $*"
    quietly as_root apt-get update -qq &&
        quietly as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y -qq -o Dpkg::Use-Pty=0 --no-install-recommends "$@"
}

# install_missing PACKAGE... : installs those that are not there yet.
install_missing() {
    command -v apt-get >/dev/null && command -v dpkg-query >/dev/null ||
        die "this system has no apt-get. Vellux is set up by script on Debian 12 and 13 only; elsewhere, install by" \
            "hand what corresponds to: $*"
    local packages
    mapfile -t packages < <(missing_of "$@")
    [ "${#packages[@]}" -eq 0 ] || install_packages "${packages[@]}"
}

# install_if_possible PACKAGE... : the same, but goes on without them, and says so.
install_if_possible() {
    local packages
    mapfile -t packages < <(missing_of "$@")
    [ "${#packages[@]}" -eq 0 ] || (install_packages "${packages[@]}") ||
        echo "$(basename "$0"): going on without ${packages[*]}" >&2
}
