#!/usr/bin/env bash
# Installs the build into a folder of its own and uses it there as a stranger would: by find_package,
# by pkg-config, and by looking at what the shared library exports.
# Usage: package_test.sh SOURCE_DIR BUILD_DIR CXX CXX_FLAGS [COMMAND]
set -euo pipefail

source_dir=$1 build_dir=$2 cxx=$3 cxx_flags=$4 command=${5:-}
# Outside the build folder, whose name may hold blanks that pkg-config would have to quote.
work=$(mktemp -d /tmp/kvx_zelvo_package.XXXXXX)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

fail() { echo "package_test: $*" >&2; exit 1; }

expect_output() { # PROGRAM
    local said
    said=$("$1")
    [[ $said == "4.2 7" ]] || fail "$1 printed \"$said\""
}

cmake --install "$build_dir" --prefix "$prefix" >"$work/install.log" || fail "$(cat "$work/install.log")"
library=$(find "$prefix" -name libkvx_zelvo.so)
[[ -n $library ]] || fail "no library installed"

cmake -S "$source_dir/tests/package/consumer" -B "$work/by_cmake" -G Ninja \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$cxx_flags" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/by_cmake" >"$work/build.log" || fail "$(cat "$work/build.log")"
expect_output "$work/by_cmake/consumer"

export PKG_CONFIG_PATH
PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
read -ra flags <<<"$cxx_flags $(pkg-config --cflags --libs 'kvx_zelvo >= 4.2')"
"$cxx" "$source_dir/tests/package/consumer/consumer.cpp" -o "$work/by_pkg_config" "${flags[@]}" \
    -Wl,-rpath,"$(dirname "$library")"
expect_output "$work/by_pkg_config"

objdump -p "$library" | grep -q 'SONAME *libkvx_zelvo.so.4.2$' || fail "wrong SONAME"
if [[ -n $command ]]; then
    "$prefix/bin/$command" --version >/dev/null || fail "the installed command does not start"
fi

# Every exported name stands in a public header, in the namespace kvx.
nm -D --defined-only --demangle "$library" | cut -d' ' -f3- >"$work/exports"
[[ -s $work/exports ]] || fail "nothing exported"
while IFS= read -r symbol; do
    name=${symbol%%(*}
    name=${name%%\[*}
    [[ $symbol == *"for kvx::"* || $name == kvx::* ]] || fail "exports $symbol"
    grep -rqw -- "${name##*::}" "$source_dir/include" || fail "exports the private $symbol"
done <"$work/exports"
