#!/usr/bin/env bash
# root.sh PACKAGES FOLDER: installs the packages in a bare root of Debian 12, uses each as a person would, removes them and
# looks for what stayed. The bare root is made once and kept in FOLDER.
set -euo pipefail
packages=$(realpath "$1")
here=$(dirname "$(realpath "$0")")
mkdir -p "$2"
bare=$(realpath "$2")/bare root=$(realpath "$2")/try

step() { echo "package-test: $*" >&2; }
leave() { umount "$root/proc" "$root/dev" 2>/dev/null || true; }
trap leave EXIT
inside() { chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
everything() { inside find / -xdev -not \( -path /proc -prune -o -path '/var/cache*' -o -path '/var/log*' -o -path '/var/lib/dpkg*' -o -path '/var/lib/apt*' -o -path '/tmp*' \) | sort; }

if [ ! -e "$bare/ready" ]; then
    step "making a bare root"
    rm -rf "$bare"
    lists=(/etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources})  # of which a machine has some
    mirror=$(cat "${lists[@]}" 2>/dev/null | sed -n 's/^URIs: *//p; s/^deb \(\[.*\] \)\?\(http[^ ]*\).*/\2/p' | head -1 || true)
    debootstrap --variant=minbase bookworm "$bare" ${mirror:+"$mirror"} >"$bare.log" 2>&1 || { tail -5 "$bare.log" >&2; exit 1; }
    touch "$bare/ready"
fi
leave
rm -rf "$root"
cp -a --reflink=auto "$bare" "$root"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
rm -f "$root/etc/dpkg/dpkg.cfg.d/"*docker*
cp "$packages"/*.deb "$here/consumer.sh" "$root/tmp"
mkdir "$root/tmp/consumer"
cp "$here"/../measuring/* "$here"/../version.c "$root/tmp/consumer"

step "what the packages depend on, and compilers"
inside apt-get update -q >"$root.log" 2>&1
depends=$(for deb in "$packages"/*.deb; do dpkg-deb -f "$deb" Depends; done | tr ',' '\n' | grep -v ovix | sort -u | paste -sd,)
inside apt-get satisfy -y -q --no-install-recommends "$depends, g++, cmake, make, pkg-config, man-db, python3-xarray" >>"$root.log" 2>&1 || { tail -20 "$root.log" >&2; exit 1; }
everything >"$root.before"

step "apt install ./*.deb"
inside sh -c 'apt-get install -y -q --no-install-recommends /tmp/*.deb' >>"$root.log" 2>&1 || { tail -20 "$root.log" >&2; exit 1; }
inside bash /tmp/consumer.sh

step "removal"
inside sh -c 'dpkg --purge $(dpkg-query -Wf "\${Package} " "*ovix*")' >>"$root.log" 2>&1 || { tail -20 "$root.log" >&2; exit 1; }
everything >"$root.after"
diff "$root.before" "$root.after" || { step "removal left or took the files above"; exit 1; }
step "all is well"
