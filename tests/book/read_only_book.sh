#!/usr/bin/env bash
# A book written by the standard tool (polyglot make-book), which the user may read but not write (as
# a distribution's package installs it), is opened and played from, and lists the game moves where
# the tool kept them. The engine runs as a user without write access to it: the current user when
# that is not root (root may write anything), else "nobody" through setpriv.
#     tests/book/read_only_book.sh ENGINE
set -euo pipefail
engine=$(realpath "$1")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
chmod 755 "$dir"
# The first 16 plies of five games, the moves of the sides that did not lose.
/usr/games/polyglot make-book -pgn "$(dirname "$0")/../data/book_games.pgn" -bin "$dir/book.bin" \
    -max-ply 16 -min-game 1 >/dev/null
chmod 444 "$dir/book.bin"
cp "$engine" "$dir/engine"
run=()
if [ "$(id -u)" = 0 ]; then run=(setpriv --reuid=65534 --regid=65534 --clear-groups); fi
# 1.e4 (four games of five), then 1...e6 (a tie with 1...e5 goes to the later entry). In the drawn
# game 1.d4 ... 8.O-O-O Qa5 every position up to ply 16 is in the book; in the game Black won, after
# 7...f5 (en passant possible) White's position is not, and after 8.exf6 Black's is.
moves="d2d4 d7d5 c2c4 e7e6 b1c3 g8f6 c1g5 f8e7 e2e3 e8g8 g1f3 b8d7 d1c2 c7c5 e1c1"
ep="e2e4 e7e6 d2d4 d7d5 e4e5 c7c5 c2c3 b8c6 g1f3 d8b6 a2a3 c5c4 b1d2 f7f5"
out=$(cd "$dir" && printf 'book 1\nbookdepth 100\npickbest 1\nsd 1\ngo\ngo\nxboard\nnew\nforce\n%s\nbk\nnew\nforce\n%s\nbk\ne5f6\nbk\nquit\n' \
    "${moves// /$'\n'}" "${ep// /$'\n'}" | "${run[@]}" ./engine)
want=$'found book.bin\n{ e2e4 80% d2d4 20% }\nPolyglot Best Found : e2e4\n{ e7e5 50% e7e6 50% }
Polyglot Best Found : e7e6\n\t{ d8a5 100% }\n\t\n\t{ g8f6 100% }'
got=$(sed 's/#[A-Za-z]*([0-9]*): //g' <<<"$out" | grep -e 'found book' -e '{' -e 'Found' -e $'^\t')
[ "$got" = "$want" ] || { echo "expected:"; echo "$want"; echo "printed:"; echo "$out"; exit 1; }
echo "read-only book of the standard tool opened and played from"
