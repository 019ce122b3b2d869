#!/usr/bin/env bash
# A book the user may read but not write (as a distribution's package installs it) is opened and
# played from. The engine runs as a user without write access to it: the current user when that is
# not root (root may write anything), else "nobody" through setpriv.
#     tests/book/read_only_book.sh ENGINE
set -euo pipefail
engine=$(realpath "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
chmod 755 "$dir"
# One entry for the start position: e2e4.
printf '\x46\x3b\x96\x18\x16\x91\xfc\x9c\x03\x1c\x00\x04\x00\x00\x00\x00' > "$dir/book.bin"
chmod 444 "$dir/book.bin"
cp "$engine" "$dir/engine"
run=()
if [ "$(id -u)" = 0 ]; then run=(setpriv --reuid=65534 --regid=65534 --clear-groups); fi
out=$(cd "$dir" && printf 'book 1\ngo\nquit\n' | "${run[@]}" ./engine)
grep -qx '#White(1): found book.bin' <<<"$out" || { echo "book not opened:"; echo "$out"; exit 1; }
grep -qx 'Polyglot Random Found : e2e4' <<<"$out" || { echo "book move not played:"; echo "$out"; exit 1; }
echo "read-only book opened and played from"
