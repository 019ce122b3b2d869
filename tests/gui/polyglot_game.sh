#!/usr/bin/env bash
# A whole game through a real UCI client: Debian's polyglot adapter drives the engine in UCI and
# speaks XBoard to this script, which relays its moves to a second copy of the engine playing in
# its XBoard dialect. Fails on any rejected move, a dead process, a silent side, or a game that
# ends without a result.
#
#   tests/uci/polyglot_game.sh <engine binary> [depth] [ply cap]
set -euo pipefail
bin=$(realpath "$1")
depth=${2:-3}
cap=${3:-300}
polyglot=$(command -v polyglot || echo /usr/games/polyglot)
[ -x "$polyglot" ] || { echo "polyglot is not installed"; exit 2; }

work=$(mktemp -d)
pg_pid=""
xb_pid=""
cleanup() {
    exec 3>&- 4<&- 5>&- 6<&- 2>/dev/null || true
    [ -n "$pg_pid" ] && kill "$pg_pid" 2>/dev/null || true
    [ -n "$xb_pid" ] && kill "$xb_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
cd "$work"
mkfifo pg_in pg_out xb_in xb_out
"$polyglot" -noini -ec "$bin" -ed "$work" -log false <pg_in >pg_out 2>pg_err &
pg_pid=$!
"$bin" <xb_in >xb_out 2>xb_err &
xb_pid=$!
exec 3>pg_in 4<pg_out 5>xb_in 6<xb_out

fail() {
    echo "FAIL: $*"
    echo "--- last polyglot lines:"; tail -n 20 pg_log 2>/dev/null || true
    echo "--- last engine lines:"; tail -n 20 xb_log 2>/dev/null || true
    exit 1
}

# Reads lines from fd $1 into the log $2 until one starts with "move " (sets $move) or reports the
# end of the game (sets $result). 60 s of silence is a failure.
answer() {
    local fd=$1 log=$2 line
    move=""
    result=""
    while IFS= read -r -t 60 line <&"$fd"; do
        line=${line%$'\r'}
        echo "$line" >>"$log"
        case $line in
            "Illegal move"*|"Error"*|"ERROR"*|*"tellusererror"*) fail "rejected: $line" ;;
            "move "*) move=${line#move }; return 0 ;;
            "1-0"*|"0-1"*|"1/2-1/2"*) result=$line; return 0 ;;
        esac
    done
    fail "no answer (process gone or silent)"
}

printf 'xboard\nprotover 2\n' >&3
until IFS= read -r -t 60 line <&4 && echo "$line" >>pg_log && [[ $line == "feature done=1"* ]]; do
    [[ -n ${line-} ]] || fail "polyglot never finished its handshake"
done
printf 'new\nsd %s\npost\n' "$depth" >&3
printf 'xboard\nprotover 2\nnew\nsd %s\n' "$depth" >&5

# The engine behind polyglot plays White; the XBoard copy answers as Black.
printf 'go\n' >&3
plies=0
while :; do
    answer 4 pg_log
    [ -n "$result" ] && break
    [ "$move" = "(none)" ] && fail "polyglot side reported no move"
    plies=$((plies + 1))
    [ "$plies" -ge "$cap" ] && break
    printf '%s\n' "$move" >&5
    answer 6 xb_log
    if [ -n "$result" ] || [ "$move" = "(none)" ]; then
        # The XBoard side has no move: polyglot must see the same end.
        answer 4 pg_log
        [ -n "$result" ] || fail "XBoard side has no move but polyglot plays on"
        break
    fi
    plies=$((plies + 1))
    [ "$plies" -ge "$cap" ] && break
    printf '%s\n' "$move" >&3
done

printf 'quit\n' >&3
printf 'quit\n' >&5
wait "$pg_pid" || true
wait "$xb_pid" || true
pg_pid=""
xb_pid=""
[ -s pg_err ] && fail "polyglot wrote to stderr: $(head -c 300 pg_err)"
[ -s xb_err ] && fail "engine wrote to stderr: $(head -c 300 xb_err)"
echo "game over after $plies plies: ${result:-ply cap reached}"
