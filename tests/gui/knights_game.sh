#!/usr/bin/env bash
# Debian's Knights (22.12) plays the engine against itself in XBoard mode on a virtual display: at
# least ten moves each, Knights still running (it once took the squares of thinking lines nobody
# had asked for as moves and crashed), and no thinking line sent, since Knights sends no "post".
# The new-game dialog is clicked through at its place on a 1024x768 screen. Not part of the test
# command. Usage: tests/gui/knights_game.sh [engine]; exits 77 (skipped) when a tool is missing.
set -euo pipefail
export PATH="$PATH:/usr/games"
engine=$(realpath "${1:-build/morvaine}")
for tool in knights xvfb-run xdotool; do
    if ! command -v "$tool" >/dev/null 2>&1; then
        echo "knights game skipped: $tool is not installed"
        exit 77
    fi
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home/.config" "$work/logs"
# Each engine Knights starts logs what it prints.
printf '#!/bin/sh\n"%s" | tee "%s/logs/out.$$"\n' "$engine" "$work" >"$work/engine.sh"
chmod +x "$work/engine.sh"
# The window fills the screen, so that the dialog sits where it is clicked; both players are
# engines, so that the dialog only asks which.
cat >"$work/home/.config/knightsrc" <<RC
[MainWindow]
1024x768 screen: Height=768
1024x768 screen: Width=1024
1024x768 screen: XPosition=0
1024x768 screen: YPosition=0

[Protocols]
engineConfigurations=Morvaine:$work/engine.sh:xboard
player1Protocol=XBoard
player2Protocol=XBoard
RC

cat >"$work/play.sh" <<PLAY
#!/bin/sh
knights >"$work/knights.out" 2>&1 &
knights=\$!
sleep 6
xdotool mousemove 26 38 click 1        # New
sleep 6
xdotool mousemove 404 281 click 1      # player 1: the first engine
sleep 2
xdotool key Return
xdotool mousemove 414 402 click 1      # player 2: the same
sleep 2
xdotool key Return
xdotool mousemove 702 494 click 1      # OK
for _ in \$(seq 120); do
    sleep 1
    [ "\$(cat "$work"/logs/out.* 2>/dev/null | grep -c '^move ')" -ge 20 ] && break
done
kill -0 \$knights 2>/dev/null && echo running >"$work/state"
kill \$knights
PLAY
chmod +x "$work/play.sh"
HOME="$work/home" timeout 300 xvfb-run -a -s "-screen 0 1024x768x24" "$work/play.sh" || true

fail() {
    echo "knights game failed: $1"
    tail -n 20 "$work"/logs/out.* "$work/knights.out" 2>/dev/null
    exit 1
}
[ -f "$work/state" ] || fail "Knights was no longer running"
[ "$(ls "$work/logs" | wc -l)" -eq 2 ] || fail "Knights did not start two engines"
for log in "$work"/logs/out.*; do
    moves=$(grep -c '^move ' "$log" || true)
    [ "$moves" -ge 10 ] || fail "an engine played $moves moves"
    if grep -E '^[0-9]+ -?[0-9]+ [0-9]+ [0-9]+' "$log" >/dev/null; then fail "a thinking line was sent"; fi
done
echo "knights game: $(cat "$work"/logs/out.* | grep -c '^move ') moves played, Knights still running, no thinking line"
