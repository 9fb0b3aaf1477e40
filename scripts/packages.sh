# The Debian packages that the project needs, and their installation. Sourced by ./run and ./test.

# To build.
BUILD_PACKAGES=(g++ cmake ninja-build ccache pkg-config qt6-base-dev qt6-svg-dev libgl1-mesa-dev unixodbc-dev
  libsqlite3-dev libboost-dev libxxhash-dev libgtest-dev)
# To run: the driver to the servers, Japanese letters, the toolkit's words in Japanese.
PROGRAM_PACKAGES=(tdsodbc unixodbc fonts-vlgothic qt6-translations-l10n)
# To test: other clients of the local server, a virtual display, the checkers, a reader of workbooks.
TEST_PACKAGES=(freetds-bin xvfb xauth clang-format-14 clang-tidy-14 libbenchmark-dev
  libfreexl-dev)

as_root() {
  if [[ $EUID -eq 0 ]]; then "$@"; else sudo "$@"; fi
}

# Installs those of the named packages that are missing.
install_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" ||
      missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return
  echo "== Installing ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
