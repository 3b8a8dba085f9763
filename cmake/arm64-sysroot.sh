#!/bin/sh
# arm64-sysroot.sh FOLDER PACKAGE...: unpacks Debian's arm64 packages, with all that they depend on,
# into FOLDER. apt works on lists and a cache of its own: the machine's packages stay untouched.
set -eu
folder=$1
shift
stamp=$folder/.packages
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$*" ]; then
  exit 0
fi
rm -rf "$folder"
apt=$folder/.apt
mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$folder/usr/lib"
: >"$apt/state/status"
# Debian 12's /lib is /usr/lib, though packages still bring files for either.
ln -s usr/lib "$folder/lib"
cat >"$apt/apt.conf" <<TEXT
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Install-Recommends "false";
APT::Sandbox::User "root";
Dir::State "$apt/state";
Dir::State::status "$apt/state/status";
Dir::Cache "$apt/cache";
Debug::NoLocking "true";
TEXT
export APT_CONFIG="$apt/apt.conf"
apt-get update -qq
apt-get install -y -qq --download-only "$@"
for package in "$apt"/cache/archives/*.deb; do
  dpkg-deb --fsys-tarfile "$package" | tar -x --keep-directory-symlink -C "$folder"
done
# Links from the root of the file system would lead out of the folder.
find "$folder/usr/lib" -type l -lname '/*' | while read -r link; do
  ln -sfn "$folder$(readlink "$link")" "$link"
done
rm -rf "$apt"
printf '%s\n' "$*" >"$stamp"
