#!/usr/bin/env bash
# scripts/check_library.sh BUILD-FOLDER [COMPILER]
#
# Installs the library of a build into a temporary folder and uses it like a client: compiles every public
# header alone, builds the example through find_package and through pkg-config, and runs it.
set -euo pipefail

examples=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/../examples" && pwd)
build=$1
compiler=${2:-c++}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
strict=(-std=c++20 -Wall -Wextra -Wconversion -Wshadow -Werror)

for component in library development; do
    cmake --install "$build" --prefix "$work/first" --component "$component" > "$work/log" || { cat "$work/log"; exit 1; }
done
# The installed tree must be relocatable.
prefix=$work/prefix
mv "$work/first" "$prefix"
library=$(find "$prefix" -name libzeb.so)
export PKG_CONFIG_PATH="${library%/*}/pkgconfig"

echo "--- headers"
for header in $(cd "$prefix/include" && find zeb -name '*.h' | sort); do
    echo "$header"
    echo "#include <$header>" | "$compiler" "${strict[@]}" $(pkg-config --cflags zeb) -fsyntax-only -x c++ -
done

echo "--- needed libraries"
readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | tee "$work/needed"
if grep -Ev '^(libstdc\+\+|libm|libgcc_s|libc|ld-linux[-a-z0-9]*)\.so' "$work/needed"; then
    echo "the library needs more than the C++ run-time" >&2
    exit 1
fi

for kind in shared static; do
    echo "--- find_package, $kind"
    cmake -S "$examples" -B "$work/$kind" -G Ninja -DZEB_LIBRARY=$kind -DCMAKE_PREFIX_PATH="$prefix" \
        -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="${strict[*]:1}"
    cmake --build "$work/$kind"
    "$work/$kind/tiny_movie" "$work/$kind.zeb"
done
# The static program must not be linked to the shared library.
if readelf -d "$work/static/tiny_movie" | grep libzeb; then exit 1; fi

echo "--- pkg-config"
"$compiler" "${strict[@]}" "$examples/tiny_movie.cpp" $(pkg-config --cflags --libs zeb) -o "$work/tiny_movie"
LD_LIBRARY_PATH=${library%/*} "$work/tiny_movie" "$work/pkg-config.zeb"

cmp "$work/shared.zeb" "$work/static.zeb"
cmp "$work/shared.zeb" "$work/pkg-config.zeb"
