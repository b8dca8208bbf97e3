#!/usr/bin/env bash
# Makes Zendrel a desktop application for the current user: a menu entry, its icon, and the
# ".zendepisode" file type, opened by Zendrel (a double-click imports the bundle).
# Usage: scripts/install-desktop.sh [path to the zendrel executable]
# Honours XDG_DATA_HOME and XDG_CONFIG_HOME; changes nothing outside them.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
exe=$(realpath "${1:-$here/build/app/zendrel}")
[ -x "$exe" ] || { echo "install-desktop: no executable at $exe" >&2; exit 1; }
data=${XDG_DATA_HOME:-$HOME/.local/share}
config=${XDG_CONFIG_HOME:-$HOME/.config}

mkdir -p "$data/applications" "$data/mime/packages" "$data/icons/hicolor/scalable/apps" "$config"
# The path may hold spaces: the Exec key quotes it.
sed "s|@ZENDREL@|\"$exe\"|g" "$here/resources/desktop/zendrel.desktop.in" >"$data/applications/zendrel.desktop"
sed -i "s|^TryExec=\"\(.*\)\"$|TryExec=\1|" "$data/applications/zendrel.desktop"
cp "$here/resources/desktop/zendrel-episode.xml" "$data/mime/packages/zendrel-episode.xml"
cp "$here/resources/icons/zendrel_app.svg" "$data/icons/hicolor/scalable/apps/zendrel.svg"

command -v update-mime-database >/dev/null && update-mime-database "$data/mime"
command -v update-desktop-database >/dev/null && update-desktop-database -q "$data/applications" || true
if command -v xdg-mime >/dev/null; then
  xdg-mime default zendrel.desktop application/x-zendrel-episode
else
  list="$config/mimeapps.list"
  touch "$list"
  if ! grep -q '^application/x-zendrel-episode=' "$list"; then
    grep -q '^\[Default Applications\]' "$list" || printf '[Default Applications]\n' >>"$list"
    sed -i '/^\[Default Applications\]/a application/x-zendrel-episode=zendrel.desktop' "$list"
  fi
fi
echo "install-desktop: Zendrel ($exe) opens .zendepisode files"
