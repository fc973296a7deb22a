#!/usr/bin/env bash
# The tests of the report's page in Debian's Chromium: check.sh [--install]. Without Chromium they are
# left out, and say so; --install brings it. The program to test is named by ZALTAG, else the release build's.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
ZALTAG=${ZALTAG:-$here/../../build/release/cli/zaltag}
export ZALTAG

case ${1:-} in
--install)
    apt-get update -qq >&2
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends chromium >/dev/null
    ;;
?*)
    echo "usage: check.sh [--install]" >&2
    exit 2
    ;;
esac

if ! browser=$(command -v chromium); then
    echo "LEFT OUT: the browser tests of the report need Chromium (tests/browser/check.sh --install)"
    exit 0
fi
exec /usr/bin/python3 "$here/check.py" "$browser"
