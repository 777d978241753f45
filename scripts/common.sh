# shellcheck shell=bash
# What `run`, `.ci/run` and the checks share. To be sourced, with the project's top as working folder.

say() { printf '\n== %s\n' "$*"; }

fail() {
    printf '\n** %s\n' "$*" >&2
    exit 1
}

# Tries a download a few times: a mirror that stumbles once should not end a build.
with_retries() {
    local attempt
    for attempt in 1 2 3 4; do
        "$@" && return
        echo "Attempt $attempt failed: $*" >&2
        sleep $((attempt * 5))
    done
    return 1
}

# missing_packages GROUP...: those of cmake/packages.txt that are not installed.
missing_packages() {
    local group packages package
    while read -r group packages; do
        [[ " $* " == *" $group "* ]] || continue
        for package in $packages; do
            [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
                echo "$package"
        done
    done <cmake/packages.txt
}

# install_packages GROUP...: installs what is missing; asks nothing.
install_packages() {
    if ! command -v apt-get >/dev/null; then
        echo "No apt-get here: cmake/packages.txt lists what must be installed." >&2
        return
    fi
    local packages apt
    read -ra packages <<<"$(missing_packages "$@" | tr "\n" " ")"
    [ ${#packages[@]} -gt 0 ] || return 0
    say "Installing Debian packages: ${packages[*]}"

    apt=(env DEBIAN_FRONTEND=noninteractive apt-get -q -y
        -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3)
    if [ "$(id -u)" != 0 ]; then
        command -v sudo >/dev/null || fail "Installing packages needs root or sudo."
        apt=(sudo "${apt[@]}")
    fi
    # Package lists may be absent or name files that the mirror has replaced.
    if ! "${apt[@]}" install --no-install-recommends "${packages[@]}" </dev/null; then
        with_retries "${apt[@]}" update </dev/null || fail "The package lists could not be loaded."
        with_retries "${apt[@]}" install --no-install-recommends "${packages[@]}" </dev/null ||
            fail "These packages could not be installed: ${packages[*]}"
    fi
}

# configure PRESET [CMAKE-OPTION...]
configure() {
    local preset=$1 launcher=
    shift
    if command -v ccache >/dev/null; then launcher=ccache; fi
    # A compiler that was named in an earlier run stays until it is named anew.
    cmake --preset "$preset" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" "$@" >"build/$preset.configure.log" 2>&1 || {
        cat "build/$preset.configure.log" >&2
        fail "Configuring '$preset' failed."
    }
}

# build PRESET [TARGET...]: with all cores.
build() {
    local preset=$1
    shift
    cmake --build --preset "$preset" --parallel "$(nproc)" ${1:+--target "$@"} || fail "Building '$preset' failed."
}
