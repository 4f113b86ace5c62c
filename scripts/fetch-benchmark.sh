# shellcheck shell=bash disable=SC2034,SC2154 # sourced: variables come from and go to the others
# Google Benchmark's source, from Debian's source package: it is not packaged for this compiler.

benchmark_source=$build/benchmark-source

# A copy of the machine's package sources with source packages enabled, and with separate package lists.
source_lists() {
    local folder=$1 file
    mkdir -p "$folder/parts" "$folder/lists/partial"
    for file in /etc/apt/sources.list.d/debian*.sources; do
        [ -e "$file" ] && sed 's/^Types:.*/Types: deb-src/' "$file" >"$folder/parts/${file##*/}"
    done
    if [ -s /etc/apt/sources.list ]; then
        sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$folder/parts/main.list"
    fi
}

need_benchmark_source() {
    [ -e "$benchmark_source/CMakeLists.txt" ] && return
    local folder=$build/source-package
    say "fetching the source of Google Benchmark"
    source_lists "$folder"
    local options=(-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$folder/parts"
        -o Dir::State::lists="$folder/lists" -o APT::Sandbox::User=root)
    (
        cd "$folder"
        apt "${options[@]}" update && apt "${options[@]}" source --download-only benchmark
    ) >>"$build/setup.log" 2>&1 || fail "the source of Google Benchmark cannot be fetched (log: build/setup.log)"
    rm -rf "$benchmark_source" "$benchmark_source.new"
    mkdir "$benchmark_source.new"
    tar -xf "$folder"/benchmark_*.orig.tar.* -C "$benchmark_source.new" --strip-components 1
    mv "$benchmark_source.new" "$benchmark_source" # renamed only when complete
}
