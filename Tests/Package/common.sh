# What the scripts in this directory share. They stand at the top of the sources, with a directory of
# their own, $work, for all that they build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
root=$PWD
system=$(uname -s)
part=$(basename "$0")
if [[ -z ${work:-} ]]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
fi
mkdir -p "$work/consumers"
cp -r Tests/Package/. "$work/consumers"  # a consumer does not stand among the library's sources

quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" && fail "failed: $*"; }; }
say() { echo "package: $part: $*"; }
fail() {
    say "FAILED: $*"
    exit 1
}
# Where one of our own machines cannot run a part, something is missing.
skip() {
    say "skipped: $*"
    if [[ -n ${CI:-} ]]; then fail "on this machine nothing may be skipped"; fi
    exit 0
}

# A part that only Linux can run.
for_linux() { if [[ $system != Linux ]]; then skip "on $system, because $*"; fi; }

# Builds the library OFF or ON (shared) and installs it in $work/prefix-OFF or -ON, if that has not
# been done yet. The prefix is moved after installing: what is installed must not depend on its place.
library() {
    if [[ -d $work/prefix-$1 ]]; then return; fi
    quietly cmake -B "$work/library-$1" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DBUILD_SHARED_LIBS="$1" -DOPTRELLA_BUILD_TESTS=OFF -DOPTRELLA_BUILD_EXAMPLES=OFF
    quietly cmake --build "$work/library-$1" -j2
    quietly cmake --install "$work/library-$1" --prefix "$work/installed-$1"
    mv "$work/installed-$1" "$work/prefix-$1"
}

# Builds a consumer, in $work/KIND.
build() {
    local kind=$1 consumer=$2
    shift 2
    quietly cmake -S "$work/consumers/$consumer" -B "$work/$kind" "$@"
    quietly cmake --build "$work/$kind" -j2
}

# Runs a tool and compares what it prints.
expect() {
    local kind=$1 expected=$2 output
    shift 2
    output=$("$work/$kind/$1" "${@:2}") || fail "$kind: status $?, '$output'"
    [[ $output == "$expected" ]] || fail "$kind: got '$output'"
    say "$kind works"
}

# The shared libraries that a program asks for, in the words of the system's own tool.
libraries_of() {
    if [[ $system == Darwin ]]; then otool -L "$1"; else objdump -p "$1"; fi
}

# Whether a program is linked with the shared library.
is_shared() { [[ $(libraries_of "$1") == *[\ /]liboptrella.[0-9ds]* ]]; }
