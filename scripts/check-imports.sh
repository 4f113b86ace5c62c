#!/usr/bin/env bash
# check-imports.sh OBJDUMP DLL...: fails when a DLL needs more than Windows' own DLLs and the companions.
set -euo pipefail

objdump=$1
shift
own='^(KERNEL32|USER32|GDI32|ADVAPI32|msvcrt|COMCTL32|COMDLG32|SHELL32|ole32|OLEAUT32|RPCRT4|WS2_32|MSWSOCK|IPHLPAPI|MPR|NETAPI32|WINMM|MSACM32|AVIFIL32|MSVFW32|ntdll|VERSION|Fenestra|Facet)\.dll$'
for dll in "$@"; do
    imports=$("$objdump" -p "$dll" | sed -n 's/^\tDLL Name: //p')
    [ -n "$imports" ] || {
        echo "no imports found in $dll"
        exit 1
    }
    foreign=$(grep -viE "$own" <<<"$imports" || true)
    [ -z "$foreign" ] || {
        echo "$dll needs $foreign"
        exit 1
    }
done
