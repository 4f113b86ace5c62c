#!/usr/bin/env bash
# under-wine.sh WINE PROGRAM [ARGUMENT...]: runs a program of which only the own output is waited for.
#
# Wine's desktop keeps the error output of the program that needed it first. Were that a pipe, its reader would take
# the program to be running for as long as any program has a window.
errors=$(mktemp)
trap 'cat "$errors" >&2; rm -f "$errors"' EXIT
"$@" 2>"$errors"
