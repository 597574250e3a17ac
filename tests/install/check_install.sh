#!/bin/bash
# Installs the build tree under a temporary prefix and uses the installed
# copy as a new user would: builds the example C host with the README's own
# pkg-config commands and with find_package, runs the installed runner
# without any library path, moves the tree and runs it again, and checks
# that every exported symbol is versioned.
#   check_install.sh BUILD_DIR SOURCE_DIR WORK_DIR CC [EXTRA_FLAGS]
# EXTRA_FLAGS go to every compile and link (the sanitizer flags of an asan build).
set -euo pipefail
build=$1 source=$2 work=$3 cc=$4 extra=${5:-}
export LC_ALL=C.UTF-8
unset LD_LIBRARY_PATH PKG_CONFIG_PATH
rm -rf "$work"
mkdir -p "$work/home"
export HOME="$work/home"

fail() { echo "check_install: $*" >&2; exit 1; }

# The README's install example: the shell block after the marker comment.
readme_block() {
    awk '/<!-- install example: checked by the tests -->/ { found = 1; next }
         found && /^```/ { if (inside) exit; inside = 1; next }
         inside { print }' "$source/README.md"
}

# 1. "make install PREFIX=..." is "cmake --install" of the build tree.
block=$(readme_block)
[[ -n "$block" ]] || fail "README has no install example"
prefix_line=$(grep -m1 '^make install PREFIX=' <<<"$block") || fail "no make install line in the example"
prefix=$(eval "echo ${prefix_line#make install PREFIX=}")
cmake --install "$build" --prefix "$prefix" >/dev/null

# 2. The example's other lines, run as written in a copy of examples/host;
# only the compiler gets the build's extra flags.
cp -r "$source/examples/host" "$work/example"
(
    cd "$work/example"
    while IFS= read -r line; do
        [[ -z "$line" || "$line" == make\ install* ]] && continue
        [[ "$line" == cc\ * ]] && line="$cc $extra ${line#cc }"
        eval "$line" >"$work/example/out.txt" || fail "README line failed: $line"
    done <<<"$block"
    diff -u expected.txt out.txt || fail "the host built with pkg-config printed something else"
)

# 3. find_package, as the README shows it.
cmake -S "$source/tests/install/consumer" -B "$work/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_C_FLAGS="$extra" -DCMAKE_EXE_LINKER_FLAGS="$extra" \
    -DHOST_SOURCE="$source/examples/host/host.c" >/dev/null
cmake --build "$work/consumer" >/dev/null
"$work/consumer/host" "$source/examples/host/resident.bas" | diff -u "$source/examples/host/expected.txt" - \
    || fail "the host built with find_package printed something else"

# 4. The installed runner finds its library by its run path, also after the
# whole tree has moved; pkg-config follows the move.
run_hello() {
    local out
    out=$("$1/bin/orvobasic" "$source/examples/hello.bas") || fail "the runner under $1 does not run"
    [[ "${out%%$'\n'*}" == 'Hello from OrvoBasic!' ]] || fail "the runner under $1 printed: $out"
}
[[ $(readelf -d "$prefix/bin/orvobasic") =~ R(UN)?PATH.*\$ORIGIN ]] || fail "the runner has no \$ORIGIN run path"
run_hello "$prefix"
mv "$prefix" "$work/moved"
run_hello "$work/moved"
includedir=$(PKG_CONFIG_PATH="$work/moved/lib/pkgconfig" pkg-config --variable=includedir orvobasic)
[[ -f "$includedir/orvobasic/orvobasic.h" ]] || fail "pkg-config names $includedir after the move"

# 5. Every symbol the library defines for others carries the version.
lib=$(ls "$work"/moved/lib/libOrvoBasic_Emb.so.*.*)
symbols=$(readelf --dyn-syms -W "$lib")
unversioned=$(awk '$7 != "UND" && ($5 == "GLOBAL" || $5 == "WEAK") && $8 != "ORVOBASIC_1.0" && $8 !~ /@@ORVOBASIC_1\.0$/ { print $8 }' <<<"$symbols")
[[ -z "$unversioned" ]] || fail "symbols without version: $unversioned"
for name in OB_Initialize VariantInit SysAllocString; do
    grep -q " $name@@ORVOBASIC_1.0$" <<<"$symbols" || fail "$name is not exported with its version"
done
echo "install checks passed"
