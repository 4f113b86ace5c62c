#!/usr/bin/env bash
# ./dev lint: format, static analysis, documentation, texts and scripts. Prints every finding.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=scripts/fetch-benchmark.sh
source "$root/scripts/fetch-benchmark.sh"

take_turn
need_build_packages
install_packages "${lint_packages[@]}"
cd "$root"
findings=0
product=(foundation messaging net media system ui library companions)

check() {
    local name=$1
    shift
    say "checking $name"
    "$@" || {
        findings=$((findings + 1))
        say "findings in $name"
    }
}

sources() { git ls-files -co --exclude-standard -- "$@" | grep -E '\.(h|cpp)$'; }

check_format() { sources | xargs clang-format --dry-run --Werror; }

# tidy ARGUMENT... < FILES: clang would use its own platform's C++ library; point it to the compiler's.
tidy() {
    local gcc include=()
    gcc=$(i686-w64-mingw32-g++-posix -print-file-name=include/c++)
    for folder in "$gcc" "$gcc/i686-w64-mingw32" "$gcc/backward" /usr/i686-w64-mingw32/include; do
        include+=(--extra-arg=-isystem"$folder")
    done
    grep '\.cpp$' | xargs -P "$(nproc)" -n 4 clang-tidy -p build/win32 --quiet --warnings-as-errors='*' \
        --extra-arg=--target=i686-w64-windows-gnu --extra-arg=-nostdinc++ "${include[@]}" "$@" 2>>"$build/clang-tidy.log"
}

# What does not ship includes large headers of the test and benchmark libraries, which a deep analysis would walk through
# in each source: that takes three times as long.
check_tidy() {
    local shallow=() argument ok=0
    for argument in -Xclang -analyzer-config -Xclang mode=shallow; do shallow+=(--extra-arg="$argument"); done
    need_benchmark_source
    configure win32 -DTESSEL_BENCHMARK_SOURCE="$benchmark_source"
    : >"$build/clang-tidy.log"
    sources "${product[@]}" | tidy || ok=1
    sources tests bench soak examples | tidy "${shallow[@]}" || ok=1
    return $ok
}

check_documentation() { doxygen docs/Doxyfile >/dev/null; }

# Each oddity has one row in docs/oddities.md, whose tables are sorted by number. A test names each one that is kept,
# unless its row ends in "(unnoticed)" because no program could notice it.
check_oddities() {
    local in_code in_docs id ok=0
    in_code=$(sources "${product[@]}" | xargs grep -ohE '\b(ODD|GUARD)-[0-9]+' | sort -u)
    in_docs=$(grep -oE '^\| (ODD|GUARD)-[0-9]+' docs/oddities.md | cut -c 3- | sort)
    diff <(echo "$in_code") <(echo "$in_docs") || ok=1
    awk '/^## / { last = 0 }
         /^\| (ODD|GUARD)-/ {
             split($2, id, "-")
             if (id[2] + 0 <= last) { print "docs/oddities.md: " $2 " is not in order"; failed = 1 }
             last = id[2] + 0
         }
         END { exit failed }' docs/oddities.md || ok=1
    while read -r id; do
        grep -rqE "Odd([0-9]+And)*${id#ODD-}([^0-9]|$)" tests || {
            echo "no test names $id"
            ok=1
        }
    done < <(grep '^| ODD' docs/oddities.md | grep -v '(unnoticed) |$' | cut -d ' ' -f 2)
    return $ok
}

# Every program shown in the documentation is one that the build compiles.
check_shown_programs() {
    local page source ok=0
    while IFS=: read -r page source; do
        diff <(sed -n "/<!-- program: ${source//\//\\/} -->/,/^\`\`\`$/p" "$page" | sed '1,2d;$d') "$source" || ok=1
    done < <(grep -oE '<!-- program: [^ ]+' README.md docs/*.md | sed 's/<!-- program: //')
    return $ok
}

check_links() {
    local page link ok=0
    while IFS=: read -r page link; do
        [ -e "$(dirname "$page")/${link%%#*}" ] || {
            echo "$page: $link leads nowhere"
            ok=1
        }
    done < <(grep -oE '\]\([^)#:]+[^):]*\)' ./*.md docs/*.md examples/*/*.md | sed 's/\](\(.*\))/\1/')
    return $ok
}

check format check_format
check code check_tidy
check documentation check_documentation
check oddities check_oddities
check floors scripts/check-floors.sh
check "the table of classes" scripts/check-classes.sh
check "shown programs" check_shown_programs
check links check_links
check scripts shellcheck -x dev .ci/run scripts/*.sh
[ "$findings" = 0 ] || fail "findings in $findings checks"
say "no findings"
