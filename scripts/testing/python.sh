# Sourced by the scripts that build and test the Python package.

# make_environment FOLDER REQUIREMENTS: an environment with these packages and nothing else. It is made anew when they
# have changed.
make_environment() {
  local folder=$1 requirements=$2
  if cmp -s "$requirements" "$folder/requirements.txt"; then return; fi
  rm -rf "$folder"
  run_quietly python3 -m venv "$folder"
  run_quietly "$folder/bin/pip" install --no-input --disable-pip-version-check -r "$requirements"
  cp "$requirements" "$folder/requirements.txt"
}

# unpacked_archive ARCHIVE FOLDER: prints where it lies then.
unpacked_archive() {
  rm -rf "$2"
  mkdir -p "$2"
  tar -xzf "$1" -C "$2"
  echo "$2"/*
}
