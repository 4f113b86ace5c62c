#!/usr/bin/env bash
# A peer for message sockets that shares no code with the library: hand-written bytes, sent by bash alone.
# usage: peer.sh PORT - connects to 127.0.0.1 twice: for the records, and for lines that say when to go on
set -euo pipefail
exec 3<>"/dev/tcp/127.0.0.1/$1" 4<>"/dev/tcp/127.0.0.1/$1"

next() { read -r _ <&4 2>/dev/null || exit 0; }
say() { echo "$1" >&4; }

# A length word cut in two, then its record cut in two.
printf '\x05\x00' >&3
say sent
next
printf '\x00\x00he' >&3
say sent
next
# The rest, an empty record, one with bytes of all kinds, and one of 300 bytes (0x012C).
printf 'llo\x00\x00\x00\x00\x04\x00\x00\x00\x00\xff\x0d\x0a\x2c\x01\x00\x00%300s' '' >&3
say sent
next
# What the other side sent, as hexadecimal text.
say "got$(head -c 12 <&3 | od -An -v -tx1)"
next
# A length of nearly 4 GiB, followed by enough to fill a buffer of the default size.
printf '\xfc\xff\xff\xff%5000s' '' >&3
say sent
next
