#!/bin/sh
# Compares what the shared library exports with the list of what programs may link to: a symbol
# that goes, or whose arguments change, breaks programs that were built before.
# Strong symbols alone count. Weak ones (inline functions, instances of templates, their tables and
# type information) are compiled into every program that uses them, and come and go with the
# compiler and its optimisation.
# Usage: exported_symbols_test.sh NM LIBRARY LIST [--update]
set -eu
nm=$1 library=$2 list=$3

symbols=$("$nm" --dynamic --defined-only --demangle "$library")
# Once each, as a constructor has two symbols: for objects, and for the base part of others.
exported=$(printf '%s\n' "$symbols" | sed -n 's/^[0-9a-f]* [ABDGRST] //p' | LC_ALL=C sort -u)

if [ "${4-}" = --update ]; then
    printf '%s\n' "$exported" >"$list"
elif ! printf '%s\n' "$exported" | diff -u --label "$list" --label "$library" "$list" -; then
    echo "The exported symbols have changed. If that is meant, say so in CHANGELOG.md and update the list:"
    echo "    '$0' '$nm' '$library' '$list' --update"
    exit 1
fi
