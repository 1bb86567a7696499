# Sourced by ./run, ./test and scripts/pictures: installs the Debian packages that are missing and says so.
# Needs bash; runs as root or with sudo.

say() { printf '\n== %s\n' "$*"; }
die() {
    printf '%s: %s\n' "$(basename "$0")" "$*" >&2
    exit 1
}

build_packages=(
    g++ cmake ninja-build pkg-config
    libssl-dev uuid-dev nlohmann-json3-dev
    libcurl4-openssl-dev libhidapi-dev libudev-dev
    libcpp-httplib-dev ca-certificates
    qt6-base-dev qt6-wayland libxcb1-dev
)
test_packages=(
    clang-14 clang-format-14 libclang-rt-14-dev
    libgtest-dev openssl coreutils
    desktop-file-utils appstream libxml2-utils
    dbus python3-dbusmock xvfb fonts-dejavu-core
)
picture_packages=(xvfb xauth fonts-dejavu-core)

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

# install_missing PACKAGE... : installs those that are not there yet.
install_missing() {
    command -v apt-get >/dev/null && command -v dpkg-query >/dev/null ||
        die "this system has no apt-get. Vellux is set up by script on Debian 12 only; elsewhere, install by" \
            "hand what corresponds to: $*"
    local package missing=()
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    if [ "${#missing[@]}" -eq 0 ]; then
        return
    fi
    say "Installing packages: ${missing[*]}"
    as_root apt-get update -qq
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
