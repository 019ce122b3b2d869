#!/usr/bin/env bash
# PyChess reads the engine's XBoard thinking lines with its own parser (Debian's pychess package),
# as its analysis panel does: in a mate in three every line must parse, its moves played one by one
# on the position, and the mate must read 100000 + 3. Not part of the test command.
# Usage: tests/gui/pychess_lines.sh [engine]; exits 77 (skipped) when pychess is not installed.
set -euo pipefail
engine=$(realpath "${1:-build/morvaine}")
if [ ! -d /usr/lib/python3/dist-packages/pychess ]; then
    echo "pychess lines skipped: pychess is not installed"
    exit 77
fi
fen='k7/8/8/2K5/8/8/8/1R6 w - - 0 1'
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(printf 'xboard\nprotover 2\npost\nsetboard %s\nsd 8\ngo\n' "$fen"; sleep 2) |
    (cd "$work" && "$engine") | grep -E '^[0-9]+ ' >"$work/lines"
# Its warnings about the missing display go to standard error.
/usr/bin/python3 - "$fen" "$work/lines" 2>/dev/null <<'PY'
import sys
from pychess.Players.CECPEngine import anare, movere
from pychess.Utils.lutils.LBoard import LBoard
from pychess.Utils.lutils.lmove import parseAny
def fail(text):
    print("pychess lines failed: " + text)
    sys.exit(1)
fen, lines = sys.argv[1], open(sys.argv[2]).read().splitlines()
score = None
for line in lines:
    match = anare.match(line)
    if not match:
        fail(f"not a thinking line to PyChess: {line}")
    score, board = match.group(2), LBoard()
    board.applyFen(fen)
    for move in movere.findall(match.group(5)):
        try:
            board.applyMove(parseAny(board, move))
        except Exception as error:
            fail(f"{line}: {error!r}")
if score != "100003":
    fail(f"the mate in three reads {score}")
print(f"pychess lines: {len(lines)} thinking lines read, the mate as {score}")
PY
