#!/usr/bin/env bash
# Draws the pictures of docs/gallery.md from files made here.
set -euo pipefail
. "$(dirname "$0")/common.sh"
configure_and_build dev tavinitf make_gallery
build/bin/make_gallery build/gallery
for file in build/gallery/*.ntf; do
  build/bin/tavinitf render "$file" -o "docs/gallery-$(basename "$file" .ntf).png"
done
