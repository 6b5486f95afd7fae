# Sourced by scripts that run programs for Windows.

# Makes the prefix that WINEPREFIX names, and starts Wine's services. They would otherwise be
# started by a test, hold its output open, and so keep it from ending.
start_wine() {
  mkdir -p "$WINEPREFIX"
  wineserver -p </dev/null >/dev/null 2>&1 &&
    wine wineboot --init </dev/null >/dev/null 2>&1 &&
    wine cmd /c rem </dev/null >/dev/null 2>&1
}
