# Google Benchmark's source, for builds for which Debian has no library. Source this file after install.sh; it changes no
# shell option.
#
#   benchmark_fetch   makes sure that the source lies in $benchmark_source
#
# It comes from the release's main suite through an apt state of its own, so that the system's list of sources stays as it
# is; apt and dpkg-source check it against the archive's signature. That needs no root.

zepbmp_cache=${XDG_CACHE_HOME:-${HOME:-/tmp}/.cache}/zepbmp
benchmark_source=$zepbmp_cache/benchmark-source

benchmark_fetch() {
    mkdir -p "$zepbmp_cache" || return 1
    (
        flock 9
        [ -e "$benchmark_source/complete" ] || benchmark_unpack
    ) 9>"$zepbmp_cache/benchmark.lock"
}

benchmark_unpack() {
    local apt=$zepbmp_cache/benchmark-apt suite
    echo "== fetching Google Benchmark's source into $benchmark_source"
    rm -rf "$benchmark_source" "$apt" || return 1
    mkdir -p "$apt/lists/partial" "$apt/archives/partial" || return 1

    suite=$(debian_main_suite) || return 1
    echo "deb-src $suite" >"$apt/sources.list"
    : >"$apt/status"
    local options=(-o Dir::State="$apt" -o Dir::State::status="$apt/status" -o Dir::Cache="$apt"
        -o Dir::Etc::SourceList="$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o APT::Sandbox::User=root -o Acquire::Languages=none)
    apt-get -qq "${options[@]}" update && (cd "$apt" && apt-get -qq "${options[@]}" source benchmark >/dev/null) || {
        echo "error: could not fetch Debian's source package 'benchmark'" >&2
        return 1
    }
    mv "$apt"/benchmark-*/ "$benchmark_source" && rm -rf "$apt" && touch "$benchmark_source/complete"
}
