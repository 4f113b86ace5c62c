#!/usr/bin/env bash
# check-classes.sh: compares docs/classes.md with the tree. Each public header has one row, which names its exported
# classes, its sources and its tests; all bear the header's stem, in whatever case, except a test that several rows name.
# Every other source and test has a row with its purpose; a header's row is also that of the source beside it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

page=docs/classes.md
failed=0
complain() {
    echo "$page: $*"
    failed=1
}

exported_classes() {
    sed -nE 's/^(template <[^>]*> ?)?class (\w+_API )?(\w+)[^;]*\{.*$/\3/p' "$1"
}

public_headers() { git ls-files -co --exclude-standard -- 'include/tessel/*/*.h' 'companions/*/include/*.h'; }

sources_and_tests() {
    git ls-files -co --exclude-standard -- foundation messaging net media system ui library resources companions |
        grep -E '\.(h|cpp)$' | grep -vE '/include/|/Layouts\.cpp$'
    git ls-files -co --exclude-standard -- 'tests/*Test.cpp'
}

is_shared_test() { [[ $1 == tests/* && $(grep -c " $1 " <<<"$rows") -gt 1 ]]; }

check_row() {
    local names=" $1 " header=$2 sources=$3 tests=$4 path stem class file name
    path=$(public_headers | grep "/$header\$") || {
        complain "there is no $header"
        return
    }
    while read -r class; do
        [[ $names == *" $class "* ]] || complain "$header: $class is missing"
    done < <(exported_classes "$path")
    stem=$(basename "$header" .h)
    for file in $sources $tests; do
        name=${file##*/}
        [ -e "$file" ] || complain "$header: there is no $file"
        [[ ${name,,} == "$stem"* ]] || is_shared_test "$file" || complain "$header: $file has another stem"
    done
}

rows=$(grep '^|.*`' "$page" | tr -d '\140,')
while IFS='|' read -r _ names header sources tests _; do
    check_row "$names" "${header// /}" "$sources" "$tests"
done < <(awk -F '|' 'NF == 6' <<<"$rows")

while read -r file; do
    [ -e "$file" ] || complain "there is no $file"
done < <(awk -F ' *[|] *' 'NF == 4 { print $2 }' <<<"$rows")

while read -r header; do
    header=${header#*include/}
    [ "$(grep -c "| ${header#tessel/} |" <<<"$rows")" = 1 ] || complain "$header needs one row"
done < <(public_headers | grep -v '/export\.h$')

while read -r file; do
    grep -qE " ($file|${file%.*}\.h) " <<<"$rows" || complain "$file needs a row"
done < <(sources_and_tests)
exit $failed
