#!/usr/bin/env bash
# Starts the application on a prepared working folder under a virtual display and checks that the
# episode list comes up with the latest publication first, without any dialog or network.
# Usage: startup_smoke.sh <zendrel binary> <scratch dir> [make_smoke_show binary]
set -euo pipefail

zendrel=$(realpath "$1")
scratch=$2
make_show=${3:-$(dirname "$zendrel")/../tests/make_smoke_show}
expected="MainViewController.update: 3 episodes: E03, E02, E01"

rm -rf "$scratch"
home="$scratch/home"
work="$scratch/work/Smoke Show"
mkdir -p "$home/.config/zendrel" "$home/.local/share" "$home/.cache" "$home/Documents" "$work"
export HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_DATA_HOME="$home/.local/share" \
    XDG_CACHE_HOME="$home/.cache" XDG_DOCUMENTS_DIR="$home/Documents" ZENDREL_HEADLESS_DIALOGS=1
unset XDG_RUNTIME_DIR QT_QPA_PLATFORM

"$make_show" "$work"
cat > "$XDG_CONFIG_HOME/zendrel/preferences.json" <<JSON
{"WorkingFolder": {"string": "$work/"}, "workFolder": {"string": "$work/"}}
JSON

log="$scratch/zendrel.log"
pidfile="$scratch/zendrel.pid"
xvfb-run -a sh -c 'echo $$ > "$0"; exec "$1"' "$pidfile" "$zendrel" >"$log" 2>&1 &
runner=$!

stop_app() {
    [ -s "$pidfile" ] && kill "$(cat "$pidfile")" 2>/dev/null || true
    wait "$runner" 2>/dev/null || true
}
trap stop_app EXIT

listed=""
for _ in $(seq 1 600); do
    listed=$(grep -m1 "MainViewController.update: " "$log" || true)
    if [ -n "$listed" ] && grep -q "external components in place" "$log"; then break; fi
    if ! kill -0 "$runner" 2>/dev/null; then break; fi
    sleep 0.1
done

fail() {
    echo "startup smoke: $1" >&2
    echo "---- log ----" >&2
    cat "$log" >&2
    exit 1
}

[ -n "$listed" ] || fail "the episode list never appeared"
[ "$listed" = "$expected" ] || fail "wrong list: '$listed', expected '$expected'"
grep -q "external components in place" "$log" || fail "the external components step did not finish"
# Any dialog is logged by the scripted door; none belongs to a normal start.
if grep -E "^(alert|confirm|selectFolder|selectFile): " "$log"; then fail "a dialog came up"; fi
kill -0 "$runner" 2>/dev/null || fail "the application ended by itself"
echo "startup smoke: ok ($listed)"
