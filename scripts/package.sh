#!/usr/bin/env bash
# Builds the Debian package of zqrs and zqrs-admin into ${ZQRS_BUILD_DIR:-build}/package and
# checks it with lintian: an error fails. With --install-test (CI runs it so) it also installs the
# package, checks that zqrs-admin answers and zqrs --demo starts, and purges it again, checking
# that nothing of it is left: that changes the machine, so it runs only when asked.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
./scripts/build.sh
build=${ZQRS_BUILD_DIR:-build}
desktop-file-validate packaging/org.zqrs.zqrs.desktop
appstreamcli validate --no-net --pedantic packaging/org.zqrs.zqrs.metainfo.xml >/dev/null ||
  appstreamcli validate --no-net packaging/org.zqrs.zqrs.metainfo.xml
rm -rf "$build/package"
(cd "$build" && cpack -G DEB -B "$PWD/package" >/dev/null)
deb=$(ls "$build"/package/zqrs_*.deb)
echo "package: $deb"
dpkg-deb --info "$deb" | grep -E '^ (Package|Version|Depends):'
# Errors fail; warnings and notes are shown.
lintian --fail-on error "$deb" || { echo "package: lintian found errors" >&2; exit 1; }
echo "package: lintian found no errors"

[ "${1:-}" = "--install-test" ] || exit 0
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
if dpkg-query -W -f='${Status}' zqrs 2>/dev/null | grep -q 'install ok installed'; then
  echo "package: zqrs is installed on this machine already; not testing over it" >&2
  exit 1
fi
files=$(dpkg-deb --contents "$deb" | awk '{print $NF}' | sed 's|^\./|/|' | grep -v '/$')
$sudo dpkg -i "$deb" >/dev/null
trap '$sudo dpkg --purge zqrs >/dev/null 2>&1 || true' EXIT
/usr/bin/zqrs-admin version
home=$(mktemp -d)
# The demo company is made in the user's data folder, then the login waits for the user: still
# running at the end, with the demo's persons written, means it started.
set +e
HOME="$home" QT_QPA_PLATFORM=offscreen timeout 60 /usr/bin/zqrs --demo >"$home/zqrs.log" 2>&1
rc=$?
set -e
persons=$(python3 -c 'import sqlite3, sys; print(sqlite3.connect(sys.argv[1]).execute("select count(*) from tRsBasic").fetchone()[0])' \
  "$home/.local/share/zqrs/demo.db" 2>/dev/null || echo 0)
cat "$home/zqrs.log"
rm -rf "$home"
[ $rc -eq 124 ] && [ "$persons" -gt 0 ] || { echo "package: zqrs --demo ended with $rc, $persons persons" >&2; exit 1; }
echo "package: zqrs --demo made its company of $persons persons and waits at the login"
$sudo dpkg --purge zqrs >/dev/null
trap - EXIT
left=0
for f in $files; do
  [ -e "$f" ] && { echo "package: left behind: $f" >&2; left=1; }
done
[ -d /usr/share/doc/zqrs ] && { echo "package: left behind: /usr/share/doc/zqrs" >&2; left=1; }
[ $left -eq 0 ] || exit 1
echo "package: installed, answered and purged without a trace"
