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
#
# Some mirrors keep the tarballs and not the .dsc. What it would say of them stands
# in the signed index as well, so it is written anew from there.
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

# with_sources COMMAND...: runs a program of apt with the private lists.
with_sources() {
  "$@" \
    -o Dir::Etc::sourcelist=/dev/null \
    -o Dir::Etc::sourceparts="$state/sources.d" \
    -o Dir::State::lists="$state/lists" \
    -o Dir::Cache="$state/cache" \
    -o APT::Get::List-Cleanup=0 \
    -o APT::Sandbox::User= \
    -o Acquire::Languages=none
}

# The index's paragraph about exactly this revision.
paragraph() {
  with_sources apt-cache showsrc --only-source protobuf 2>/dev/null |
    awk -v RS= -v version="$revision" 'index($0 "\n", "\nVersion: " version "\n")'
}

fetch_package() {
  with_sources apt-get -q --download-only source "protobuf=$revision"
}

# The tarballs, each by its hash; and a .dsc of what the index says.
fetch_tarballs() {
  echo "The .dsc cannot be had: fetching the tarballs by their hashes"
  paragraph | sed -n '/^Checksums-Sha256:/,/^[^ ]/s/^ //p' | while read -r hash _ file; do
    case $file in *.dsc) continue ;; esac
    echo "$hash  $file" | sha256sum --check --status 2>/dev/null && continue
    uri=$(with_sources apt-get -q --print-uris --download-only source "protobuf=$revision" |
      awk -v file="$file" '$2 == file { gsub("\047", "", $1); print $1 }')
    [ -n "$uri" ] || { echo "no place is known for $file" >&2; exit 1; }
    with_sources /usr/lib/apt/apt-helper download-file "$uri" "$file" "SHA256:$hash"
  done
  paragraph | sed -e 's/^Package:/Source:/' -e '/^Directory:/d' -e '/\.dsc$/d' \
    > "protobuf_$revision.dsc"
}

cd "$directory"
with_sources apt-get -q update
# The newest Debian revision of exactly this upstream version.
revision=$(with_sources apt-cache showsrc --only-source protobuf 2>/dev/null |
  sed -n 's/^Version: //p' | grep "^$version-" | sort -V | tail -n 1)
[ -n "$revision" ] || { echo "no source package protobuf $version" >&2; exit 1; }
fetch_package || fetch_tarballs
rm -rf protobuf.part protobuf
dpkg-source --no-check -x "protobuf_$revision.dsc" protobuf.part
mv protobuf.part protobuf
rm -rf "$state"
