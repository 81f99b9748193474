# The Debian packages that Kelvox is built from, and how the missing ones are installed.
# Sourced by run, test and test-package.

build_packages="g++ cmake ninja-build ccache pkg-config
  libexpected-dev libfmt-dev libexpat1-dev nlohmann-json3-dev libcli11-dev libboost-dev
  libplist-dev zlib1g-dev libcurl4-openssl-dev
  libsqlite3-dev bzip2 unzip qt6-base-dev libqt6svg6-dev libgl-dev libspeechd-dev
  fonts-dejavu-core qt6-translations-l10n libnetcdf-dev gmt-gshhg-low librsvg2-bin"
test_packages="libgtest-dev libxcb1-dev dbus xvfb xauth"
package_packages="dpkg-dev lintian debootstrap desktop-file-utils appstream xvfb xauth"

install_missing() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
      missing+=("$package")
  done
  if [ ${#missing[@]} -eq 0 ]; then
    echo "== all needed packages are installed"
    return 0
  fi
  echo "== installing: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "Need root to install: ${missing[*]}. Run as root: apt-get install ${missing[*]}" >&2
      return 1
    }
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${missing[@]}"
}

build_release() {
  echo "== configuring (build/release)"
  cmake --preset release "$@"
  echo "== building"
  cmake --build --preset release
}
