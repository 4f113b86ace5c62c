#!/usr/bin/env bash
# check-classes.sh: compares docs/classes.md with the tree. Each public header has one row, which names its exported
# classes, its sources and its test; all bear the header's stem, in whatever case.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

page=docs/classes.md
failed=0
complain() {
    echo "$page: $*"
    failed=1
}

exported_classes() {
    sed -nE 's/^(template <[^>]*> ?)?class (TESSEL_API )?(\w+)[^;]*\{.*$/\3/p' "$1"
}

check_row() {
    local names=" $1 " header=$2 sources=$3 test=$4 stem class file name
    [ -e "include/tessel/$header" ] || {
        complain "there is no $header"
        return
    }
    while read -r class; do
        [[ $names == *" $class "* ]] || complain "$header: $class is missing"
    done < <(exported_classes "include/tessel/$header")
    stem=$(basename "$header" .h)
    for file in $sources $test; do
        name=${file##*/}
        [ -e "$file" ] || complain "$header: there is no $file"
        [[ ${name,,} == "$stem"* ]] || complain "$header: $file has another stem"
    done
}

rows=$(grep '^| .*\.h`' "$page" | tr -d '\140,')
while IFS='|' read -r _ names header sources test _; do
    check_row "$names" "${header// /}" "$sources" "$test"
done <<<"$rows"

while read -r header; do
    [ "$(grep -c "| $header |" <<<"$rows")" = 1 ] || complain "$header needs one row"
done < <(cd include/tessel && find foundation messaging net media system ui -name '*.h' | sort)
exit $failed
