# Wine for Windows programs. Source this file after install.sh; it changes no shell option.
#
#   wine_setup [BITS]         makes sure that there is a Wine that runs programs of 32 bits (if none are given) or 64
#   wine_environment [BITS]   sets the environment and $wine_loader; fails when wine_setup has not been run
#   wine_start                starts Wine's server, after wine_environment
#   wine_run BITS PROGRAM.exe [ARGUMENT...] | --setup    the whole of a script: ends with the program's exit status
#
# For 64 bits it is Debian's package wine64. For 32 bits Debian's wine32 is used where it installs beside the 64-bit
# packages. Where apt refuses that, the same packages of the release's main suite are unpacked into the cache folder,
# and run from there: that needs neither root nor a chroot. Each has a prefix of its own.

zepbmp_cache=${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/zepbmp
wine_root=$zepbmp_cache/wine-root
wine_programs=/usr/lib/wine

wine_installed() { packages_installed libwine:i386 wine32:i386; }

wine_environment() {
    local root= suffix=
    wine_bits=${1:-32}
    if [ "$wine_bits" = 64 ]; then
        suffix=64
        if ! packages_installed wine64; then
            echo "error: there is no Wine yet; run scripts/lib/run-win64 --setup" >&2
            return 1
        fi
    elif [ -e "$wine_root/complete" ]; then
        root=$wine_root
        export LD_LIBRARY_PATH=$root/lib/i386-linux-gnu:$root/usr/lib/i386-linux-gnu
    elif ! wine_installed; then
        echo "error: there is no Wine yet; run scripts/lib/run-win32 --setup" >&2
        return 1
    fi
    wine_prefix=$zepbmp_cache/wine-prefix$suffix
    wine_loader=$root$wine_programs/wine$suffix
    wine_server=$root$wine_programs/wineserver$wine_bits
    export WINEPREFIX=$wine_prefix WINEARCH=win$wine_bits WINEDEBUG=-all WINESERVER=$wine_server
    # No display, and no offer to install what only .NET and HTML programs need.
    export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
    unset DISPLAY WAYLAND_DISPLAY
}

wine_setup() {
    mkdir -p "$zepbmp_cache" || return 1
    (
        flock 9
        if ! wine_environment "${1:-32}" 2>/dev/null; then
            if [ "$wine_bits" = 64 ]; then
                require_packages wine64 || exit 1
            else
                wine_install_system || wine_unpack || exit 1
            fi
            wine_environment "$wine_bits" || exit 1
        fi
        if [ ! -e "$wine_prefix/zepbmp-ready" ]; then
            echo "== Wine's first start: makes $wine_prefix"
            rm -rf "$wine_prefix"
            timeout 300 "$wine_loader" wineboot --init </dev/null >/dev/null 2>&1 9>&- || {
                echo "error: Wine's first start failed; see: WINEPREFIX=$wine_prefix $wine_loader wineboot --init" >&2
                exit 1
            }
            touch "$wine_prefix/zepbmp-ready"
        fi
    ) 9>"$zepbmp_cache/wine.lock"
}

# Starts Wine's server and services where they do not run, to end a minute after their last use. A program that started
# them itself would hand them its output, and whoever reads that would wait for them.
wine_start() {
    local status=0
    (
        flock 9
        "$wine_server" --persistent=60 >/dev/null 2>&1 9>&- || status=$?
        # The server's status 2: another one is running.
        [ "$status" -ne 2 ] || exit 0
        [ "$status" -eq 0 ] && timeout 60 "$wine_loader" cmd /c exit </dev/null >/dev/null 2>&1 9>&- || {
            echo "error: Wine does not start; remove $zepbmp_cache and run scripts/lib/run-win$wine_bits --setup" >&2
            exit 1
        }
    ) 9>"$zepbmp_cache/wine.lock"
}

wine_run() {
    local bits=$1
    shift
    if [ $# -eq 0 ]; then
        echo "usage: run-win$bits PROGRAM.exe [ARGUMENT...] | --setup" >&2
        exit 2
    fi
    if [ "$1" = --setup ]; then
        wine_setup "$bits"
        exit
    fi
    wine_environment "$bits" || exit
    wine_start || exit
    exec "$wine_loader" "$@"
}

# Installs wine32 from the system's own sources. Leaves the system as it was where apt refuses.
wine_install_system() {
    local added=
    [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null 2>&1 || return 1
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        echo "== trying the system's i386 packages for Wine"
        run_as_root dpkg --add-architecture i386 || return 1
        added=1
        run_as_root apt-get -qq update || true
    fi
    if apt-get -qq -s --no-install-recommends install wine32:i386 >/dev/null 2>&1; then
        require_packages wine32:i386 libwine:i386 && return 0
    fi
    echo "== the system's i386 packages do not install beside the others"
    if [ -n "$added" ]; then
        run_as_root dpkg --remove-architecture i386 || return 1
        run_as_root apt-get -qq update || true
    fi
    return 1
}

# Downloads wine32 and everything it needs with an apt state of its own, and unpacks it.
wine_unpack() {
    local apt=$zepbmp_cache/wine-apt suite package link target zlib
    echo "== unpacking Debian's 32-bit Wine into $wine_root"
    rm -rf "$wine_root" "$apt" || return 1
    mkdir -p "$wine_root" "$apt/lists/partial" "$apt/archives/partial" || return 1

    suite=$(debian_main_suite) || return 1
    echo "deb $suite" >"$apt/sources.list"
    : >"$apt/status"
    local options=(-o Dir::State="$apt" -o Dir::State::status="$apt/status" -o Dir::Cache="$apt"
        -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o APT::Architecture=i386 -o APT::Architectures=i386 -o APT::Sandbox::User=root
        -o APT::Get::List-Cleanup=false -o Acquire::Languages=none)
    apt-get -qq "${options[@]}" update &&
        apt-get -qq -y "${options[@]}" --no-install-recommends --download-only install wine32 || {
        echo "error: could not download Wine's packages" >&2
        return 1
    }
    for package in "$apt"/archives/*.deb; do
        dpkg-deb --fsys-tarfile "$package" |
            tar -x -C "$wine_root" --no-same-owner --exclude='./usr/share/doc/*' --exclude='./usr/share/man/*' \
                --exclude='./usr/lib/*/wine/x86_64-windows/*' || return 1
    done

    # What the packages' installation scripts would do: links that stay inside, zlib marked as Wine's own DLL.
    find "$wine_root" -type l -lname '/*' -print | while IFS= read -r link; do
        target=$wine_root$(readlink "$link")
        if [ -e "$target" ]; then ln -sfnr "$target" "$link" || exit 1; fi
    done || return 1
    zlib=$wine_root/usr/i686-w64-mingw32/lib/zlib1.dll
    { head -c 64 "$zlib" && printf 'Wine builtin DLL\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0' && tail -c +97 "$zlib"; } \
        >"$wine_root/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll" || return 1
    # The loader looks for its server beside itself.
    ln -sf wineserver32 "$wine_root$wine_programs/wineserver" || return 1
    rm -rf "$apt" || return 1
    touch "$wine_root/complete"
}
