#!/usr/bin/env bash
# Makes the sample file of demo.sh.  demo_file.sh TAVINITF MAKE_DEMO DIRECTORY
set -euo pipefail
tavinitf=$1 make_demo=$2 folder=$3
"$make_demo" "$folder"
"$tavinitf" create "$folder/demo.ntf" --date 20260101120000 \
  --image "$folder/map.ppm" --rgb --image "$folder/relief.pgm" \
  --graphic "$folder/annotation.cgm@3,3,637,397" --text "$folder/note.txt"
"$tavinitf" set "$folder/demo.ntf" "$folder/demo.ntf" \
  "header:FTITLE=An invented coast" "image:1.ILOC=258,14" "text:0.TXTITL=About the map"
