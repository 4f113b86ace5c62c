#!/usr/bin/env bash
# check-floors.sh: fails when a source or header includes one of a higher floor, so that no cycle between folders arises.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Each floor, and what it may include beside itself and its own umbrella header. library/ stands above all.
floors='
fenestra
facet
gsm tesselgsm
foundation fenestra
system foundation fenestra resources
messaging/office foundation
ui messaging/office foundation fenestra facet resources
messaging/host ui messaging/office foundation facet
net system foundation
media foundation
'

folders='tessel|fenestra|facet|tesselgsm|foundation|system|messaging|ui|net|media|resources|library|\.\.'
git ls-files -co --exclude-standard -- include companions foundation system messaging ui net media |
    grep -E '\.(h|cpp)$' | xargs grep -noE "^#include [<\"]($folders)/[^>\"]+" |
    awk -F '[:<"]' -v floors="$floors" '
        BEGIN {
            count = split(floors, lines, "\n")
            for (i = 1; i <= count; i++) {
                words = split(lines[i], word, " ")
                for (j = 1; j <= words; j++) allowed[word[1], word[j]] = 1
            }
        }
        function floor(path) {
            sub(/^(include|companions)\//, "", path)
            if (path ~ /^tessel\/[a-z]+\.h$/) return ""
            sub(/^tessel\//, "", path)
            if (path ~ /^messaging\/host/) return "messaging/host"
            if (path ~ /^messaging\//) return "messaging/office"
            sub(/\/.*/, "", path)
            return path
        }
        {
            from = floor($1)
            if (from == "") next
            if ($4 == "tessel/" from ".h") next
            to = floor($4)
            if (!((from, to) in allowed)) {
                print $1 ":" $2 ": " from " may not include " $4
                failed = 1
            }
        }
        END { exit failed }'
