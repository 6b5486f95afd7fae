# Sourced by the scripts that build and test the Python package.

readonly python_work=$PWD/build/python

# make_environment FOLDER REQUIREMENTS DEBIAN_PACKAGE...: an environment with these packages and nothing else, made anew when they
# have changed. Where PyPI cannot be reached it has Debian's packages in their place, in the versions of that release.
make_environment() {
  local folder=$1 requirements=$2
  shift 2
  if cmp -s "$requirements" "$folder/requirements.txt"; then return; fi
  rm -rf "$folder"
  run_quietly python3 -m venv "$folder"
  if ! "$folder/bin/pip" install --quiet --no-input --disable-pip-version-check -r "$requirements" >"$folder/pip.log" 2>&1; then
    echo "== python: PyPI is out of reach, which leaves Debian's packages" >&2
    install_packages "$@"
    rm -rf "$folder"
    run_quietly /usr/bin/python3 -m venv --system-site-packages "$folder"
    return # The next run asks PyPI again.
  fi
  cp "$requirements" "$folder/requirements.txt"
}

make_build_environment() {
  make_environment "$python_work/tools" python/requirements-build.txt \
    python3-cffi python3-setuptools python3-wheel python3-build python3-venv patchelf
}

# A copy of the package and of what it is built of, so that setuptools writes nothing into the repository.
copy_python_source() {
  rm -rf "$python_work/source"
  mkdir -p "$python_work/source"
  run_quietly "$python_work/tools/bin/python" -c '
import pathlib, sys
sys.path.insert(0, "python/building")
import library
library.copy_package(pathlib.Path("."), pathlib.Path(sys.argv[1]))' "$python_work/source"
}

# build_python KIND FROM TO: sdist or wheel.
build_python() {
  run_quietly "$python_work/tools/bin/python" -m build --no-isolation "--$1" --outdir "$3" "$2"
}

# install_from_tree TREE: the library as a wheel takes it, from what was built there. Sets KSV_PREFIX.
install_from_tree() {
  local component
  rm -rf "$python_work/prefix"
  for component in runtime data licences; do
    run_quietly cmake --install "$1" --prefix "$python_work/prefix" --component "$component"
  done
  export KSV_PREFIX=$python_work/prefix
}
