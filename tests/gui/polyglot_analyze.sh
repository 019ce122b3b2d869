#!/usr/bin/env bash
# Analysis through a real UCI client: Debian's polyglot adapter, spoken to in XBoard, turns
# "analyze" into "go infinite" and "exit" into "stop". The engine must keep analysing (no move is
# played, and a deeper line than any before comes within 30 s, longer on slow builds), and after
# "exit" the adapter must answer a ping and play a move as usual.
#
#   tests/gui/polyglot_analyze.sh <engine binary> [time scale]
set -euo pipefail
bin=$(realpath "$1")
scale=${2:-1}
polyglot=$(command -v polyglot || echo /usr/games/polyglot)
[ -x "$polyglot" ] || { echo "polyglot is not installed"; exit 2; }

work=$(mktemp -d)
pg_pid=""
cleanup() {
    exec 3>&- 4<&- 2>/dev/null || true
    [ -n "$pg_pid" ] && kill "$pg_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
cd "$work"
mkfifo pg_in pg_out
"$polyglot" -noini -ec "$bin" -ed "$work" -log true -lf "$work/pg.log" <pg_in >pg_out 2>pg_err &
pg_pid=$!
exec 3>pg_in 4<pg_out
: >out
# Collects the adapter's output in the background, so that the lines of a long analysis never
# block it.
cat <&4 >>out &

fail() {
    echo "FAIL: $*"
    echo "--- adapter output:"; tail -n 15 out
    echo "--- adapter log:"; grep -E '(Engine|Adapter|GUI)->' pg.log | grep -v ': info ' | tail -n 20
    exit 1
}
wait_for() { # pattern, seconds (stretched by the time scale)
    for _ in $(seq "$(awk "BEGIN { print int($2 * $scale * 10) }")"); do
        grep -qE "$1" out && return 0
        sleep 0.1
    done
    return 1
}
deepest() { grep -oE '^ *[0-9]+ ' out | sort -n | tail -1 | tr -d ' '; }

printf 'xboard\nprotover 2\n' >&3
wait_for '^feature done=1' 30 || fail "no handshake"
printf 'new\npost\nanalyze\n' >&3
wait_for '^ *[0-9]+ ' 30 || fail "no thinking line"
sleep 2
first=$(deepest)
# Keeps deepening until stop: a line deeper than any before it still comes.
wait_for "^ *($(seq -s '|' $((first + 1)) 99)) " 30 || fail "output stopped at depth $first"
depth=$(deepest)
grep -q '^move ' out && fail "a move was played during the analysis"
grep -q 'Adapter->Engine: go infinite' pg.log || fail "the adapter did not send go infinite"
grep -q 'Engine->Adapter: bestmove' pg.log && fail "the engine answered before stop"
printf 'exit\nping 7\n' >&3
wait_for '^pong 7' 10 || fail "no pong after exit"
grep -q 'Adapter->Engine: stop' pg.log || fail "the adapter did not send stop"
printf 'sd 4\ngo\n' >&3
wait_for '^move ' 30 || fail "no move after the analysis"
printf 'quit\n' >&3
wait "$pg_pid" || true
pg_pid=""
[ -s pg_err ] && fail "polyglot wrote to stderr: $(head -c 300 pg_err)"
echo "analysed from depth $first to $depth, ended on exit"
