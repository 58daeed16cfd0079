#!/usr/bin/env bash
# Builds, makes a sample file with the tool, renders it and says where the picture is.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
configure_and_build dev tavinitf make_demo
scripts/demo_file.sh build/bin/tavinitf build/bin/make_demo build/demo
build/bin/tavinitf info build/demo/demo.ntf
build/bin/tavinitf render build/demo/demo.ntf -o build/demo/demo.png
echo "The picture is $PWD/build/demo/demo.png"
