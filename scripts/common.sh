# Sourced by the other scripts: where the project is, how it is configured and built.
cd "$(dirname "${BASH_SOURCE[0]}")/.."
jobs=$(nproc)
# What ccache asks for before it caches sources that use a precompiled header.
export CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros}

# configure_and_build PRESET [target...]: configures when that was not done with these presets, and builds.
configure_and_build() {
  local preset=$1
  shift
  local launcher=()
  if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  local folder=build
  [ "$preset" = dev ] || folder=build-$preset
  if [ ! -f "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
    cmake --preset "$preset" "${launcher[@]}" >/dev/null
  fi
  cmake --build "$folder" -j "$jobs" ${1:+--target "$@"}
}

# The C and C++ files that git knows or would add.
source_files() {
  git ls-files --cached --others --exclude-standard -- '*.c' '*.h' '*.cpp' '*.hpp' | while read -r file; do
    [ -f "$file" ] && echo "$file"
  done
  return 0
}
