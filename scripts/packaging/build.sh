# Sourced by scripts/release and scripts/test_reproducible, behind scripts/packages.sh: how what is
# shipped is built from sources, and nothing else of them.

# build_shipped linux|windows SOURCES BUILD_TREE [OPTION...]
build_shipped() {
  local system=$1 sources=$2 tree=$3 options=(-DCMAKE_BUILD_TYPE=Release -DKSV_BUILD_TESTS=OFF)
  shift 3
  if [[ $system == windows ]]; then
    options+=("-DCMAKE_TOOLCHAIN_FILE=$sources/cmake/mingw-w64.cmake")
  fi
  run_quietly cmake -G Ninja -S "$sources" -B "$tree" "${options[@]}" "$@"
  run_quietly cmake --build "$tree" --parallel "$(nproc)"
}

# make_archives BUILD_TREE FOLDER
make_archives() {
  run_quietly cpack --config "$1/CPackConfig.cmake" -B "$2"
  rm -rf "$2/_CPack_Packages"
}

# The time that stands in what is made: that of the commit, wherever and whenever it is built.
set_time_of_commit() {
  SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
  export SOURCE_DATE_EPOCH
}
