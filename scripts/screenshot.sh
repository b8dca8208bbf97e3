#!/usr/bin/env bash
# Starts Zendrel on the smoke test's three-episode show under a virtual display and saves a picture
# of the episode list to ./screenshots/. Needs xvfb-run and ImageMagick's `import`, both installed by
# scripts/setup.sh (manual use only).
# Usage: scripts/screenshot.sh [build-dir]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$(realpath "${1:-$here/build}")
zendrel="$build/app/zendrel"
make_show="$build/tests/make_smoke_show"
for tool in xvfb-run import; do
    command -v "$tool" >/dev/null || { echo "screenshot: $tool is missing" >&2; exit 1; }
done

scratch=$(mktemp -d /tmp/zendrel-screenshot-XXXXXX)
trap 'rm -rf "$scratch"' EXIT
home="$scratch/home"
work="$scratch/work/Screenshot Show"
mkdir -p "$home/.config/zendrel" "$home/.local/share" "$home/.cache" "$home/Documents" "$work"
export HOME="$home" XDG_CONFIG_HOME="$home/.config" XDG_DATA_HOME="$home/.local/share" \
    XDG_CACHE_HOME="$home/.cache" XDG_DOCUMENTS_DIR="$home/Documents" ZENDREL_HEADLESS_DIALOGS=1
unset QT_QPA_PLATFORM

"$make_show" "$work" >/dev/null
cat > "$XDG_CONFIG_HOME/zendrel/preferences.json" <<JSON
{"WorkingFolder": {"string": "$work/"}, "workFolder": {"string": "$work/"}}
JSON

mkdir -p "$here/screenshots"
out="$here/screenshots/episode-list-$(date +%Y%m%d-%H%M%S).png"
log="$scratch/zendrel.log"

# One display for the app and the grab: both run inside the same xvfb-run.
xvfb-run -a -s "-screen 0 1200x800x24" bash -c '
    "$1" >"$2" 2>&1 &
    app=$!
    for _ in $(seq 1 300); do
        grep -q "MainViewController.update: " "$2" && break
        sleep 0.1
    done
    sleep 1.5
    import -window root "$3"
    kill "$app"
    wait "$app" 2>/dev/null || true
' _ "$zendrel" "$log" "$out"

grep -m1 "MainViewController.update: " "$log" || { cat "$log" >&2; exit 1; }
echo "screenshot: $out"
