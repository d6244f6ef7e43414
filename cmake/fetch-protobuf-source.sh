#!/bin/sh
# Fetches Debian's source package of protobuf and unpacks it.
#
#   fetch-protobuf-source.sh VERSION DIRECTORY
#
# VERSION is the upstream version (3.21.12); DIRECTORY receives the unpacked
# tree as DIRECTORY/protobuf. apt does the fetching: it verifies the archive's
# signature, and through it the hash of every file of the source package. The
# system's own apt configuration is read and not changed: the deb-src entries
# live in a private state directory, so no root rights are needed.
set -eu

version=$1
directory=$2
state=$directory/apt
mkdir -p "$state/sources.d" "$state/lists/partial" "$state/cache/archives/partial"

# Every binary entry of the system becomes a source entry of the private list.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
  [ -f "$list" ] || continue
  sed -n 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$list" \
    >> "$state/sources.d/$(basename "$list").new.list"
done
for list in /etc/apt/sources.list.d/*.sources; do
  [ -f "$list" ] || continue
  sed 's/^Types:.*/Types: deb-src/' "$list" > "$state/sources.d/$(basename "$list")"
done
for list in "$state"/sources.d/*.new.list; do
  [ -f "$list" ] || continue
  mv "$list" "${list%.new.list}"
done

apt() {
  apt-get -q \
    -o Dir::Etc::sourcelist=/dev/null \
    -o Dir::Etc::sourceparts="$state/sources.d" \
    -o Dir::State::lists="$state/lists" \
    -o Dir::Cache="$state/cache" \
    -o APT::Get::List-Cleanup=0 \
    -o APT::Sandbox::User= \
    -o Acquire::Languages=none \
    "$@"
}

cd "$directory"
apt update
# The newest Debian revision of exactly this upstream version.
revision=$(apt-cache -o Dir::Etc::sourcelist=/dev/null \
    -o Dir::Etc::sourceparts="$state/sources.d" \
    -o Dir::State::lists="$state/lists" \
    -o Dir::Cache="$state/cache" showsrc --only-source protobuf 2>/dev/null \
  | sed -n 's/^Version: //p' | grep "^$version-" | sort -V | tail -n 1)
[ -n "$revision" ] || { echo "no source package protobuf $version" >&2; exit 1; }
apt --download-only source "protobuf=$revision"
rm -rf protobuf
dpkg-source --no-check -x "protobuf_$revision.dsc" protobuf.part
mv protobuf.part protobuf
rm -rf "$state"
