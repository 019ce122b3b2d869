#!/usr/bin/env bash
# Plays games between the engine and fairymax through a real xboard on a virtual display, without
# any human input, and checks that every game ended normally: no illegal move, no time forfeit, no
# crash or lost connection. Usage: tests/gui/xboard_game.sh [engine] [games] [depth]
# Exits 77 (skipped) when xboard, xvfb-run or fairymax is not installed.
set -euo pipefail

# Debian installs the games (xboard, fairymax) outside the usual path.
export PATH="$PATH:/usr/games"
engine=$(realpath "${1:-build/morvaine}")
games=${2:-1}
depth=${3:-4}
for tool in xboard xvfb-run fairymax; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "xboard game skipped: $tool is not installed"
        exit 77
    fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/engine" "$work/fairymax"
# The engine starts in an empty folder, without a settings file, as a new user would start it.

# Both sides search to a fixed depth within thirty seconds and one second a move; pondering on, so
# the engine also ponders on fairymax's time. A game still running after 100 moves is adjudicated
# a draw to bound the run.
status=0
timeout 900 xvfb-run -a -s "-screen 0 1024x768x24" \
    xboard -fcp "$engine" -fd "$work/engine" -scp fairymax -sd "$work/fairymax" \
    -xncp -matchGames "$games" -tc 0:30 -inc 1 -searchDepth "$depth" -ponderNextMove true -autoCallFlag true -popupExitMessage false \
    -saveGameFile "$work/games.pgn" -debugMode true -nameOfDebugFile "$work/debug.txt" \
    -adjudicateDrawMoves 100 -saveSettingsOnExit false -settingsFile "$work/xboardrc" \
    >"$work/xboard.out" 2>&1 || status=$?

fail() {
    echo "xboard game failed: $1"
    [ -f "$work/games.pgn" ] && cat "$work/games.pgn"
    [ -f "$work/debug.txt" ] && tail -n 60 "$work/debug.txt"
    cat "$work/xboard.out"
    exit 1
}

[ "$status" -eq 0 ] || fail "xboard ended with status $status"
[ -f "$work/games.pgn" ] || fail "no games were saved"
played=$(grep -c '^\[Result ' "$work/games.pgn" || true)
[ "$played" -eq "$games" ] || fail "$played of $games games were saved"
if grep -E '^\[Result "\*"\]' "$work/games.pgn" >/dev/null; then fail "an unfinished game"; fi
# The closing comment of each game says why it ended.
if grep -i -E '\{[^}]*(illegal|time|forfeit|crash|disconnect|abort|exit|false|error)[^}]*\}' \
    "$work/games.pgn" >/dev/null; then
    fail "a game ended abnormally"
fi
if grep -E 'Illegal move|ERROR' "$work/debug.txt" >/dev/null; then fail "an engine rejected a move"; fi

echo "xboard game: $games games finished normally"
grep -E '^\[(White|Black|Result) ' "$work/games.pgn"
grep -o -E '\{[^}]*\} (1-0|0-1|1/2-1/2)' "$work/games.pgn" || true
