# Sourced by ./test and ./demo: the Debian packages that they need, installed when missing, and a
# root folder that sandboxes can be made from. Expects to be sourced from the repository's top.
# SPDX-FileCopyrightText: The rastertoZR7700 authors
# SPDX-License-Identifier: Apache-2.0

build_packages=(g++ cmake ninja-build pkg-config gettext
  libcups2-dev libcupsimage2-dev libplist-dev
  libjpeg-dev libpng-dev libtiff-dev libexif-dev liblcms2-dev nlohmann-json3-dev)
companion_packages=(cups cups-ppdc cups-filters ghostscript poppler-utils python3)
test_packages=(libgtest-dev libgmock-dev bubblewrap python3-pytest python3-numpy python3-pil
  gobjc++ libgnustep-base-dev cups-client cups-ipp-utils man-db mandoc reuse shellcheck
  clang-tidy cppcheck valgrind)
installation_test_packages=(debhelper debootstrap dpkg-dev)
long_test_packages=(apparmor autopkgtest lintian qemu-user-static)

# project_version: as CMakeLists.txt has it, where alone it stands.
project_version() {
  sed -n 's/^project(zr7700 VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt
}

may_be_root() {
  [ "$(id -u)" = 0 ] || command -v sudo >/dev/null
}

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

is_installed() {
  [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# apt_get COMMAND...: services that come with packages are not started now, which is what Debian's
# policy-rc.d is for. Ours goes with the shell, or with the next installation if that was killed.
apt_get() {
  as_root sh -c '
    policy=/usr/sbin/policy-rc.d
    mark="# While packages are installed for rastertoZR7700."
    if [ ! -e "$policy" ] || grep -qs "$mark" "$policy"; then
      trap "rm -f $policy" EXIT
      trap "exit 130" INT
      trap "exit 143" TERM
      trap "exit 129" HUP
      printf "#!/bin/sh\n%s\nexit 101\n" "$mark" >"$policy" && chmod 755 "$policy"
    fi
    apt-get update &&
      DEBIAN_FRONTEND=noninteractive apt-get -y --no-install-recommends "$@"
  ' sh "$@"
}

install_packages() { apt_get install "$@"; }

# install_build_dependencies ARCHITECTURE PROFILES: what debian/control asks for.
install_build_dependencies() {
  apt_get build-dep --host-architecture "$1" --build-profiles "$2" "$PWD"
}

# need_packages NAME...: installs those that are missing.
need_packages() {
  local missing=() package
  for package in "$@"; do is_installed "$package" || missing+=("$package"); done
  [ ${#missing[@]} = 0 ] && return
  if ! command -v apt-get >/dev/null; then
    echo "Please install these packages, or what your system calls them: ${missing[*]}" >&2
    return 1
  fi
  if ! may_be_root; then
    echo "Packages are missing, and there is no sudo: please run this as root and then try again:" \
      "apt-get install ${missing[*]}" >&2
    return 1
  fi
  echo "Installing ${#missing[@]} Debian packages: ${missing[*]}"
  local log
  log=$(mktemp) || return 1
  if ! install_packages "${missing[@]}" >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "The packages could not be installed (the whole output is in $log)." >&2
    return 1
  fi
  rm -f "$log"
}

# A sandbox can only be made where "/" is a mount of its own, which it is not in a plain chroot:
# starts the script again with "/" mounted on itself there.
need_sandbox_root() {
  bwrap --dev-bind / / true 2>/dev/null && return
  if [ "${ZR7700_REMOUNTED:-}" != 1 ] && [ "$(id -u)" = 0 ]; then
    local top
    top=$(mktemp -d) || return 1
    ZR7700_REMOUNTED=1 exec unshare -m --propagation unchanged sh -c '
      top=$1; folder=$2; shift 2
      mount --rbind / "$top" && exec chroot "$top" sh -c "cd \"\$0\" && exec \"\$@\"" "$folder" "$@"
    ' sh "$top" "$PWD" "$@"
  fi
  echo "The whole-job tests run in mount namespaces (bubblewrap), which this machine forbids." >&2
  return 1
}
