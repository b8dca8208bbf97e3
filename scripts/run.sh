#!/usr/bin/env bash
# Sets up, builds and starts Zendrel.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
"$here/scripts/setup.sh" "$here/build"
exec "$here/build/app/zendrel" "$@"
