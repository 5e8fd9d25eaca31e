#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Tries the source package as an archive would, in installations of Debian 13 and of sid.  As
# root.
#
#   scripts/source_package.sh [STEP...]    these steps, or all in this order
#   scripts/source_package.sh --list       what there is
#
# Each step runs in scripts/minimal_debian.sh, with what is committed.  What they make and print
# is in build/source_package/, or in the folder that HOPLAUNCH_SOURCE_PACKAGE names.  The steps
# after "build" look at the packages that it made.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/lib.sh
source scripts/lib.sh

# Step, release, what it shows, and the packages that it needs.
steps=(
  'build|trixie|dpkg-buildpackage without a network|xz-utils'
  'symbols|trixie|no exported name is lost, by abidiff|abigail-tools'
  'lintian|sid|lintian --pedantic -EviI|lintian'
  'hardening|sid|blhc and hardening-check|blhc devscripts'
  'licenses|sid|reuse lint, and licensecheck against debian/copyright|licensecheck reuse'
  'documents|sid|the metadata and the bill of materials|appstream jq'
  'autopkgtest|trixie|the tests of debian/tests, runner null|autopkgtest'
  'autopkgtest-chroot|trixie|the same, runner chroot|autopkgtest'
  'piuparts|trixie|install, remove and purge|piuparts dpkg-dev'
  'upgrade|trixie|the upgrade from the last packages that had no source package|piuparts dpkg-dev
    file librsvg2-bin'
  'nodoc|trixie|the profile nodoc|'
  'cross|trixie|a cross build for arm64|'
  'sbuild|trixie|sbuild|sbuild uidmap'
  'reprotest|trixie|two builds that differ in everything are the same|reprotest diffoscope-minimal
    disorderfs faketime locales-all fakeroot sudo'
)
base_packages=(build-essential debhelper git pkg-kde-tools mmdebstrap)
home=$(realpath -m "${HOPLAUNCH_SOURCE_PACKAGE:-build/source_package}")

# --- Inside -------------------------------------------------------------------------

result=/result
packages=$result/packages

# source_in FOLDER: the source package, not built yet.
source_in() {
  mkdir -p "$1"
  scripts/source_archive "$1"
}
# build_dependencies OPTION...: installs what debian/control names.
build_dependencies() { apt-get update -qq && apt-get build-dep -y -qq --no-install-recommends "$@" "$PWD"; }
without_tests=(env DEB_BUILD_OPTIONS=nocheck DEB_BUILD_PROFILES=nocheck)

step_build() {
  build_dependencies --build-profiles=nocheck
  source_in /build
  (cd /build/hoplaunch && "${without_tests[@]}" unshare --net dpkg-buildpackage --no-sign) || return
  rm -rf "$packages"
  mkdir "$packages"
  find /build -maxdepth 1 -type f -exec cp -t "$packages" {} +
}

# extracted PACKAGE: where its files are.
extracted() {
  rm -rf "/extracted/$1"
  mkdir -p "/extracted/$1"
  dpkg-deb --extract "$packages/$1"_*_amd64.deb "/extracted/$1"
  printf '/extracted/%s' "$1"
}

step_symbols() {
  local library status=0
  library=$(echo "$(extracted libhoplaunch1)"/usr/lib/*/libhoplaunch.so.1)
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types \
    --debug-info-dir "$(extracted libhoplaunch1-dbgsym)/usr/lib/debug" \
    --headers-dir "$(extracted libhoplaunch-dev)/usr/include/hoplaunch" \
    --out-file "$result/libhoplaunch1.abi" "$library" || return
  xz --decompress --stdout tests/data/libhoplaunch1.abi.xz >/before.abi
  abidiff --no-show-locs /before.abi "$result/libhoplaunch1.abi" || status=$?
  printf 'abidiff ended with status %d.\n' "$status"
  ((status == 0 || status == 4)) || return # 4 is what was only added
  # A name that is lost is noticed.
  sed "/elf-symbol name='_Z10HTMLescapeB5cxx11PKcjb'/d; s/ elf-symbol-id='_Z10HTMLescapeB5cxx11PKcjb@@[^']*'//" \
    "$result/libhoplaunch1.abi" >/less.abi
  status=0
  abidiff --no-show-locs "$result/libhoplaunch1.abi" /less.abi || status=$?
  printf 'With a name less it ended with status %d.\n' "$status"
  ((status == 12))
}

step_lintian() {
  lintian --version
  lintian --allow-root --pedantic -EviI --fail-on error,warning "$packages"/*.changes
}

step_hardening() {
  local program
  blhc "$result/build.log" || return
  for program in "$(extracted hoplaunch)"/usr/bin/* \
    "$(extracted libhoplaunch1)"/usr/lib/*/libhoplaunch.so.1; do
    # Those of the start of the C library are not the project's.
    hardening-check --nocfprotection --nobranchprotection "$program" || return
  done
}

step_licenses() {
  reuse lint || return
  # debian/copyright says that all of the source has one license.
  licensecheck --recursive --machine --check '.*' --ignore '/(LICENSES|\.git|debian)/|/LICENSE$' . \
    >/found || return
  cut --fields=2 /found | sort | uniq --count
  ! grep -vE $'\t(UNKNOWN|MIT License)$' /found
}

step_documents() {
  local folder
  folder=$(extracted hoplaunch)
  appstreamcli validate --no-net "$folder"/usr/share/metainfo/*.xml || return
  jq --raw-output --from-file scripts/bill_of_materials.jq \
    "$folder/usr/share/doc/hoplaunch/hoplaunch.spdx.json"
}

# find_debs: sets debs, the packages without those for debuggers.
find_debs() { debs=("$packages"/{hoplaunch,libhoplaunch1,libhoplaunch-dev,hoplaunch-doc}_*.deb); }

# test_packages RUNNER...
test_packages() {
  find_debs
  source_in /build
  apt-get update -qq
  autopkgtest --apt-upgrade --no-built-binaries "${debs[@]}" /build/hoplaunch -- "$@"
}
step_autopkgtest() { test_packages null; }
step_autopkgtest-chroot() {
  minimal /minimal.tar ca-certificates && mkdir /minimal && tar -C /minimal --extract --file=/minimal.tar || return
  test_packages chroot /minimal
}

# minimal ARCHIVE: a minimal Debian.
minimal() {
  mmdebstrap --quiet --variant=minbase --include="$(IFS=, && echo "${*:2}")" trixie "$1"
}

step_piuparts() {
  find_debs
  mkdir /repository
  cp "${debs[@]}" /repository
  with_piuparts /repository --no-upgrade-test "${debs[@]}"
}

# with_piuparts REPOSITORY ARGUMENT...: with the packages of a folder to choose from.
with_piuparts() {
  (cd "$1" && dpkg-scanpackages . >Packages) || return
  minimal /minimal.tar.gz ca-certificates || return
  piuparts --distribution=trixie --basetgz=/minimal.tar.gz --mirror='http://deb.debian.org/debian main' \
    --bindmount="$1" --extra-repo="deb [trusted=yes] file:$1 ./" --no-eatmydata --warn-on-others "${@:2}"
}

# The packages of the last commit that had no source package are built once, and kept.
step_upgrade() {
  local before=$result/before last
  if ! compgen -G "$before/hoplaunch_*.deb" >/dev/null; then
    last=$(git log -1 --diff-filter=D --format=%H -- packaging/triggers)^
    git clone -q "$PWD" /before && git -C /before checkout -q "$last" || return
    (cd /before && ./package) || true # its lintian may be older than the one here
    mkdir -p "$before"
    cp /before/build/package/*.deb "$before"
  fi
  cp -r "$before" /repository
  # Those of the new packages that there were.
  with_piuparts /repository --no-install-purge-test "$packages"/hoplaunch_*.deb \
    "$packages"/libhoplaunch1_*.deb
}

step_nodoc() {
  build_dependencies --build-profiles=nocheck,nodoc
  source_in /build
  cd /build/hoplaunch || return
  DEB_BUILD_OPTIONS='nocheck nodoc' DEB_BUILD_PROFILES='nocheck nodoc' dpkg-buildpackage --no-sign &&
    ! compgen -G '/build/hoplaunch-doc_*'
}

step_cross() {
  dpkg --add-architecture arm64
  build_dependencies --host-architecture=arm64 --build-profiles=cross,nocheck --arch-only
  apt-get install -y -qq --no-install-recommends crossbuild-essential-arm64
  source_in /build
  cd /build/hoplaunch || return
  DEB_BUILD_OPTIONS=nocheck dpkg-buildpackage --host-arch=arm64 --build-profiles=cross,nocheck \
    --build=any --no-sign || return
  mkdir -p "$result/arm64"
  cp /build/*_arm64.* "$result/arm64"
  dpkg-deb --fsys-tarfile /build/hoplaunch_*_arm64.deb | tar --extract --to-stdout ./usr/bin/hopopen >/hopopen
  readelf --file-header /hopopen | grep 'Machine: *AArch64'
}

step_sbuild() {
  source_in /build
  (cd /build && dpkg-source --build hoplaunch)
  mount -t sysfs -o ro sysfs /sys # which sbuild lets the build see
  minimal /build/trixie.tar build-essential apt ca-certificates
  chown -R somebody: /build
  setpriv --reuid=somebody --regid=somebody --init-groups env HOME=/home/somebody \
    sbuild --chroot-mode=unshare --chroot=/build/trixie.tar --dist=trixie --arch-all --profiles=nocheck \
    --no-run-lintian --no-run-piuparts --no-run-autopkgtest --build-dir=/build /build/*.dsc
}

step_reprotest() {
  build_dependencies --build-profiles=nocheck
  source_in /build
  # For the order of files, which another file system varies for that user.
  mknod --mode=666 /dev/fuse c 10 229
  ln -sf /proc/self/mounts /etc/mtab
  useradd --create-home builder
  rm -rf "$result/reprotest"
  reprotest --store-dir="$result/reprotest" --no-diffoscope \
    --variations='+all,-domain_host,user_group.available+=builder:builder' \
    --build-command 'DEB_BUILD_OPTIONS=nocheck DEB_BUILD_PROFILES=nocheck dpkg-buildpackage --no-sign --build=binary' \
    /build/hoplaunch '../*.deb' -- null
}

inside() {
  "step_$1"
}

# --- Outside -----------------------------------------------------------------------

# packages_of RELEASE: what its steps need.
packages_of() {
  local row release needs
  for row in "${steps[@]}"; do
    IFS='|' read -r -d '' _ release _ needs <<<"$row" || true
    [[ $release != "$1" ]] || xargs -n 1 <<<"$needs"
  done
}

# one ROW: the step.
one() {
  local name release text status=0 began=$SECONDS more
  IFS='|' read -r -d '' name release text _ <<<"$1" || true
  printf '== %s: %s\n' "$name" "$text"
  mapfile -t more < <(packages_of "$release" | sed '/^$/d' | sort -u)
  scripts/minimal_debian.sh make "$home/$release" "$release" "${base_packages[@]}" "${more[@]}"
  scripts/minimal_debian.sh run "$home/$release" "$home/result" \
    bash scripts/source_package.sh inside "$name" >"$home/result/$name.log" 2>&1 </dev/null || status=1
  outcome "$name" "$status" "$(tail -n 20 "$home/result/$name.log")"
  printf '%s: %s, %d s\n' "$name" "$( ((status == 0)) && echo okay || echo FAILED)" $((SECONDS - began))
}

main() {
  local row name
  need_root 'it makes installations of Debian'
  mkdir -p "$home/result"
  for name; do
    for row in "${steps[@]}"; do
      [[ ${row%%|*} != "$name" ]] || one "$row"
    done
  done
  closing_line
}

case ${1:-} in
  --list) printf '%s\n' "${steps[@]}" | sed -n 's/^\([a-z-]*\)|\([a-z]*\)|\([^|]*\)|.*/\1 (\2): \3/p' ;;
  inside) "$@" ;;
  *)
    (($# > 0)) || mapfile -t all < <(printf '%s\n' "${steps[@]}" | sed -n 's/^\([a-z-]*\)|.*/\1/p')
    main "${@:-${all[@]}}"
    ;;
esac
