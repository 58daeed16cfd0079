#!/usr/bin/env bash
# Installs the Debian packages of scripts/packages.txt that are missing. Costs nothing when all are there.
set -euo pipefail
cd "$(dirname "$0")/.."

if ! command -v dpkg-query >/dev/null; then
  echo "bootstrap: this is no Debian system. Install what corresponds to these packages, then build:" >&2
  grep -v '^#' scripts/packages.txt | tr '\n' ' ' >&2
  echo >&2
  exit 1
fi

mapfile -t wanted < <(grep -v '^#' scripts/packages.txt)
installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null || true)
missing=()
for package in "${wanted[@]}"; do
  grep -qx "$package installed" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "bootstrap: ${#missing[@]} packages are missing, and only root can install them. Run:" >&2
  echo "  sudo apt-get update && sudo apt-get install --no-install-recommends ${missing[*]}" >&2
  exit 1
fi

echo "bootstrap: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
install=(apt-get install -y -qq --no-install-recommends "${missing[@]}")
# Package lists that are there may be good enough; when they are absent or stale, fetch them and try again.
if ! compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null || ! "${install[@]}"; then
  apt-get update -qq
  "${install[@]}"
fi
