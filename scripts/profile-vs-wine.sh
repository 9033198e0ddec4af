#!/usr/bin/env bash
# The profile library held against the Windows profile functions run by Wine: N random scripts
# of writes, deletions and reads (300 if not given) and the hand-picked ones, on files seeded
# with comments, blanks, tabs, odd line ends and quotes. Prints the counts and every difference
# that no known Wine deviation explains; fails when one is left. About 1 min for 300.
#   scripts/profile-vs-wine.sh [N]      (PROFILE_SEED=n for another set of random scripts)
set -euo pipefail
cd "$(dirname "$0")/.."
count="${1:-300}"
bash scripts/install-deps.sh --wine >/dev/null

work="$(mktemp -d /tmp/profile-vs-wine.XXXXXX)"
wine="$(command -v wine64 || echo /usr/lib/wine/wine64)"
wineserver="$(command -v wineserver || echo /usr/lib/wine/wineserver64)"
export WINEPREFIX="$work/prefix" WINEDEBUG=-all WINE="$wine"
trap '"$wineserver" -k 2>/dev/null || true; rm -rf "$work"' EXIT

x86_64-w64-mingw32-gcc -O2 -Wall -Wextra -Werror -o "$work/wine_profile_script.exe" \
    tools/profile_wine/wine_profile_script.c
# Only the profile library is needed: built straight from its two sources, not the whole console.
g++ -std=c++20 -O1 -fPIC -Wall -Wextra -Werror -Isrc $(pkg-config --cflags Qt6Core) \
    tools/profile_wine/library_profile_script.cpp src/data/profile_file.cpp \
    src/data/whole_file.cpp $(pkg-config --libs Qt6Core) -o "$work/library_profile_script"
"$wine" wineboot -i >/dev/null 2>&1 || true

python3 tools/profile_wine/profile_vs_wine.py "$count" "$work/run" \
    "$work/wine_profile_script.exe" "$work/library_profile_script"
