#!/usr/bin/env bash
# under-wine.sh WINE PROGRAM [ARGUMENT...]: runs a program and waits only for the program's own output.
#
# Wine's desktop process inherits the error output of the program that started it. If that were a pipe, its reader would
# consider the program running for as long as any program has a window.
errors=$(mktemp)
trap 'cat "$errors" >&2; rm -f "$errors"' EXIT
"$@" 2>"$errors"
