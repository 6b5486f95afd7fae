# Sourced by the scripts beside it: what a Debian machine needs, by purpose, and how to get it.

# To build the libraries and the command without mails, which is enough for scripts/demo.
readonly demo_packages=(g++ cmake ninja-build python3 libcli11-dev nlohmann-json3-dev libutf8proc-dev)
# To build what is installed.
readonly build_packages=("${demo_packages[@]}" libgmime-3.0-dev pkg-config)
# To build and run tests and benchmarks.
readonly test_packages=(
  "${build_packages[@]}" git
  libgtest-dev libbenchmark-dev libicu-dev libgsf-1-dev libuchardet-dev pkg-config
  clang libclang-rt-14-dev locales perl unicode-data
  doxygen strace
  python3-jsonschema python3-olefile libgsf-bin
  mandoc zsh fish
)
# For scripts/site, beside those of building.
readonly site_packages=(python3-markdown doxygen mandoc)

# For the Windows build and its tests; not every machine can have them.
readonly windows_packages=(g++-mingw-w64-x86-64-posix wine64 wine googletest)

# For scripts/release, beside those that build: the Debian packages.
readonly release_packages=(debhelper dpkg-dev fakeroot lintian pkg-config)

# For scripts/build_wheel and scripts/test_python.
readonly python_packages=(g++ cmake ninja-build git python3 python3-dev python3-venv libutf8proc-dev)

# For scripts/test_clusters, beside those of Python: Spark.
readonly cluster_packages=(openjdk-17-jre-headless procps)

# For scripts/coverage, beside those of the tests.
readonly coverage_packages=(llvm)

# Those of the packages named that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    if [[ $(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
      echo "$package"
    fi
  done
}

apt_install() {
  echo "== Installing $*"
  run_quietly apt-get update
  run_quietly env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"
}

# Installs what is missing of the packages named, as root; anyone else is told the line to run.
install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  if ((${#missing[@]} == 0)); then return; fi
  if ((EUID != 0)); then
    echo "Some packages are missing. Run this, and then $0 again:" >&2
    echo "  sudo apt-get update && sudo apt-get install -y ${missing[*]}" >&2
    exit 1
  fi
  apt_install "${missing[@]}"
}

# False, and said so, when the Windows build or Wine cannot be had here.
install_windows_packages() {
  local missing
  mapfile -t missing < <(missing_packages "${windows_packages[@]}")
  if ((${#missing[@]} == 0)); then return 0; fi
  if ((EUID == 0)) && (apt_install "${missing[@]}"); then return 0; fi
  echo "== windows: these packages are missing and not installed: ${missing[*]}" >&2
  return 1
}

# The output of a command is of interest only when it fails.
run_quietly() {
  local log
  log=$(mktemp)
  if ! "$@" >"$log" 2>&1; then
    cat "$log" >&2
    rm -f "$log"
    echo "failed: $*" >&2
    exit 1
  fi
  rm -f "$log"
}
