#!/usr/bin/env bash
# Builds, makes a sample file, renders it with the tool and says where the picture is.
set -euo pipefail
"$(dirname "$0")/bootstrap.sh"
. "$(dirname "$0")/common.sh"
configure_and_build dev tavinitf make_demo
mkdir -p build/demo
build/bin/make_demo build/demo/demo.ntf
build/bin/tavinitf info build/demo/demo.ntf
build/bin/tavinitf render build/demo/demo.ntf -o build/demo/demo.png
echo "The picture is $PWD/build/demo/demo.png"
