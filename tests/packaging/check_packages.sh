#!/usr/bin/env bash
# Installs the packages that scripts/package made into a system that holds nothing but Debian's essential
# packages, runs the main job there, and takes the packages away again.
#
#   tests/packaging/check_packages.sh FOLDER    FOLDER: the packages
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
packages=$(cd "$1" && pwd)

inside=$(mktemp)
trap 'rm -f "$inside"' EXIT
cat >"$inside" <<'END'
set -eu
export DEBIAN_FRONTEND=noninteractive
apt-get install -y -qq --no-install-recommends /packages/*.deb >/dev/null 2>&1
cd /tmp
samples=/usr/share/trunnion/samples
machine=$samples/machines/trunnion-ac.toml
path=$samples/toolpaths/dome-over-the-top.cl
trunnion solve "$machine" "$path" -o dome.csv --gcode dome.ngc --quiet
trunnion verify "$machine" "$path" dome.csv | grep '^verdict'
test -s dome.ngc
grep -q 'trunnion solve' /usr/share/man/man1/trunnion.1
python3 - "$machine" <<'PYTHON'
import sys, trunnion
machine = trunnion.load(sys.argv[1])
print("python:", machine.name, trunnion.__version__)
PYTHON
apt-get remove -y -qq trunnion python3-trunnion libtrunnion-dev 'libtrunnion[0-9]*' >/dev/null 2>&1
if find /usr -name '*trunnion*' | grep .; then
  echo 'these are left behind' && exit 1
fi
END

mmdebstrap --quiet --variant=apt --format=null \
  --customize-hook="mkdir \"\$1/packages\" && cp '$packages'/*.deb \"\$1/packages\"" \
  --customize-hook="cp '$inside' \"\$1/inside.sh\"" \
  --customize-hook='chroot "$1" sh /inside.sh' \
  bookworm -
echo 'the packages install, work and go away in a clean system'
