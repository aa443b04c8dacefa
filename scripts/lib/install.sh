# Installs Debian packages that are missing. Source this file; it changes no shell option.
#
#   require_packages PKG...   installs those of the packages that are not installed yet
#   run_as_root CMD...        runs a command as root, through sudo where needed
#   debian_main_suite         prints where apt has this release's main suite from

run_as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        echo "error: '$*' has to run as root: run this script as root, or install sudo" >&2
        return 1
    fi
}

# True when every package named is installed.
packages_installed() {
    local package state
    for package in "$@"; do
        state=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null) || return 1
        [ "$state" = "install ok installed" ] || return 1
    done
}

# True when apt can install every package named.
packages_available() {
    local package candidate
    for package in "$@"; do
        candidate=$(LC_ALL=C apt-cache policy "$package" 2>/dev/null | sed -n 's/^  Candidate: //p')
        [ -n "$candidate" ] && [ "$candidate" != "(none)" ] || return 1
    done
}

# Debian's main suite of this release as apt knows it: address, name, component.
debian_main_suite() {
    local suite
    suite=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' 'Component: main' |
        awk '$2 !~ /-/ && !done { print; done = 1 }')
    if [ -z "$suite" ]; then
        echo "error: apt knows no Debian main suite; run apt-get update" >&2
        return 1
    fi
    echo "$suite"
}

require_packages() {
    local package
    local missing=()
    for package in "$@"; do
        packages_installed "$package" || missing+=("$package")
    done
    [ "${#missing[@]}" -gt 0 ] || return 0

    if ! command -v apt-get >/dev/null 2>&1; then
        echo "error: missing ${missing[*]}, and there is no apt-get here to install them" >&2
        return 1
    fi
    echo "== installing ${missing[*]}"
    if ! packages_available "${missing[@]}"; then
        run_as_root apt-get -q update || return 1
    fi
    # Lists that are old name files that the archive has replaced: then a fresh list helps.
    install_now "${missing[@]}" || { run_as_root apt-get -q update && install_now "${missing[@]}"; } || {
        echo "error: could not install ${missing[*]}" >&2
        return 1
    }
}

install_now() {
    run_as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends \
        -o Dpkg::Use-Pty=0 install "$@"
}
