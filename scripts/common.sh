# shellcheck shell=bash disable=SC2154
# Functions shared by ./run, ./test and .ci/run, which source this file with `root` set to the repository's
# folder.

if [[ -z ${ZEB_TEST_MEDIA:-} && -d $root/../shared/media ]]; then
    ZEB_TEST_MEDIA=$(cd -- "$root/../shared/media" && pwd)
    export ZEB_TEST_MEDIA
fi

# build PRESET [TARGET...]
# Configures if necessary and builds. Prints nothing unless there is something to do or an error.
build() (
    cd -- "$root" || exit
    preset=$1
    targets=("${@:2}")
    folder=build/$preset
    log=$folder/build.log
    mkdir -p "$folder"
    # Serialise concurrent builds.
    if command -v flock > /dev/null; then
        exec 9> "$folder/.lock"
        flock 9
    fi
    fail() {
        cat "$log" >&2
        echo "Building the $preset preset failed; the output above is in $log." >&2
        exit 1
    }
    if [[ ! -e $folder/build.ninja || CMakePresets.json -nt $folder/build.ninja ]]; then
        echo "Building ZEBMaker ($preset) ..." >&2
        cmake --preset "$preset" < /dev/null > "$log" 2>&1 9>&- || fail
    elif ! ninja -C "$folder" -n "${targets[@]:-all}" 2>&1 | grep -q 'no work to do'; then
        echo "Building ZEBMaker ($preset) ..." >&2
    else
        exit 0
    fi
    cmake --build --preset "$preset" ${targets[0]:+--target "${targets[@]}"} < /dev/null >> "$log" 2>&1 9>&- || fail
)

# runTests PRESET [CTEST-ARGUMENT...]
runTests() {
    local folder=$root/build/$1
    shift
    ctest --test-dir "$folder" --output-on-failure --no-tests=error \
        --parallel "${CTEST_PARALLEL_LEVEL:-$(nproc 2> /dev/null || echo 2)}" "$@" < /dev/null
}
