# shellcheck shell=bash
# Sourced by run and test: installs what is missing to build the program, asks nothing and does nothing twice.

debianPackages=(
    clang-19 lld-19 libclang-rt-19-dev cmake ninja-build ccache pkg-config
    nlohmann-json3-dev libfmt-dev libssl-dev libicu-dev libre2-dev libplist-dev libvips-dev libjpeg-dev libcli11-dev
    python3
)
debianTestPackages=(libgtest-dev libgmock-dev shellcheck clang-format-19 git e2fsprogs libvips-tools)
debianBenchmarkPackages=(libbenchmark-dev gdu ncdu jdupes fdupes rmlint findimagedupes libvips-tools openssl)
brewPackages=(cmake ninja ccache pkg-config nlohmann-json fmt openssl@3 icu4c re2 libplist vips jpeg-turbo cli11)
brewTestPackages=(googletest shellcheck clang-format)
brewBenchmarkPackages=(google-benchmark gdu ncdu jdupes fdupes rmlint)

say() { printf '%s\n' "$*" >&2; }

asRoot() {
    if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

installDebian() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "Installing: ${missing[*]}"
    asRoot apt-get -qq update >&2
    DEBIAN_FRONTEND=noninteractive asRoot apt-get -qq install -y --no-install-recommends "${missing[@]}" >&2 </dev/null
}

installBrew() {
    local missing=() package
    for package in "$@"; do
        # By the formula's name, which may be an alias of the one it is listed under.
        [ -d "$(brew --prefix "$package" 2>/dev/null)" ] || missing+=("$package")
    done
    if [ ${#missing[@]} -gt 0 ]; then
        say "Installing: ${missing[*]}"
        brew install --quiet "${missing[@]}" >&2
    fi
    # These are kept out of the places where a build looks by itself.
    CMAKE_PREFIX_PATH=$(brew --prefix icu4c):$(brew --prefix openssl@3):$(brew --prefix jpeg-turbo)
    PKG_CONFIG_PATH=${CMAKE_PREFIX_PATH//://lib/pkgconfig:}/lib/pkgconfig
    export CMAKE_PREFIX_PATH PKG_CONFIG_PATH
}

# installNeeds run|tests|benchmarks: what building needs; for tests and benchmarks what they need too.
installNeeds() {
    local debian=("${debianPackages[@]}") brewed=("${brewPackages[@]}")
    if [ "$1" = tests ]; then
        debian+=("${debianTestPackages[@]}")
        brewed+=("${brewTestPackages[@]}")
    elif [ "$1" = benchmarks ]; then
        debian+=("${debianBenchmarkPackages[@]}")
        brewed+=("${brewBenchmarkPackages[@]}")
    fi
    if command -v apt-get >/dev/null; then
        installDebian "${debian[@]}"
    elif command -v brew >/dev/null; then
        installBrew "${brewed[@]}"
    else
        say "This machine has neither apt-get nor brew: install by hand what scripts/setup.sh lists."
    fi
    if command -v clang++-19 >/dev/null; then export CXX=clang++-19; fi
}

# build PRESET TARGET...: silent when there is nothing to do.
build() {
    local preset=$1 strict=
    shift
    # In CI a warning fails the test builds; a user's build must not break over a newer compiler's warning.
    if [ -n "${CI-}" ] && [ "$preset" != release ]; then strict=-DLOFTMERE_WERROR=ON; fi
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "Configuring $preset"
        cmake --preset "$preset" ${strict:+"$strict"} >"build/$preset.log" 2>&1 || { cat "build/$preset.log" >&2; return 1; }
    fi
    ninja -C "build/$preset" --quiet "$@" >&2
}
