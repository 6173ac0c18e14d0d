#!/usr/bin/env bash
# Builds the Debian package, unpacks it into a scratch folder, validates its files and runs its programs
# there. In CI also installs it and removes it again.
#
#     scripts/check_package.sh [PACKAGE.deb]     with an argument: checks this package instead of building one
set -euo pipefail

root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT

fail() { printf 'check_package: %s\n' "$*" >&2; exit 1; }

package=${1:-}
if [[ -z $package ]]; then
    cd -- "$root"
    # A separate build folder: the programs must not contain the path of the source tree.
    cmake --preset release -B build/package -DZEB_DEVELOPMENT_RESOURCES=OFF -DZEB_BUILD_TESTS=OFF \
        -DZEB_BUILD_BENCHMARKS=OFF -DZEB_JOIN_SOURCES=ON > "$scratch/configure.log" || { cat "$scratch/configure.log"; exit 1; }
    cmake --build build/package > "$scratch/build.log" || { tail -40 "$scratch/build.log"; exit 1; }
    (cd build/package && cpack -G DEB -B "$scratch/deb") > "$scratch/cpack.log" ||
        { cat "$scratch/cpack.log"; exit 1; }
    package=$(echo "$scratch"/deb/zebmaker_*.deb)
fi
dpkg-deb -x "$package" "$scratch/root"
usr=$scratch/root/usr
share=$usr/share

# The application has no domain, so its id is a plain name.
desktop-file-validate "$share/applications/zebmaker.desktop"
appstreamcli validate --no-net --override=cid-desktopapp-is-not-rdns=info "$share/metainfo/zebmaker.metainfo.xml"
for page in zeb zebmaker; do
    warnings=$(man --warnings -l "$share/man/man1/$page.1" 2>&1 > /dev/null)
    [[ -z $warnings ]] || fail "$page.1: $warnings"
done
grep -rqF "$root" "$usr/bin" && fail "a program knows the source tree"

# The modules imported by the windows must be among the package's dependencies.
depends=$(dpkg-deb -f "$package" Depends)
while read -r module; do
    name=qml6-module-$(tr '[:upper:].' '[:lower:]-' <<< "${module%.impl}")
    [[ $depends == *"$name"[,\ ]* ]] || fail "$module is imported, but $name is no dependency"
done < <(grep -rhoE --include='*.qml' '^import Qt[A-Za-z.]+' "$root"/{app,platform,player,ui} | sort -u | cut -c8-)

# Run the programs with the unpacked files only and a separate home.
for folder in CONFIG DATA CACHE STATE RUNTIME; do
    variable=XDG_${folder}_HOME
    [[ $folder == RUNTIME ]] && variable=XDG_RUNTIME_DIR
    mkdir -m 700 "$scratch/$folder"
    export "$variable=$scratch/$folder"
done
export XDG_DATA_DIRS=$share:/usr/local/share:/usr/share
movie=$scratch/demo.zeb
"$usr/bin/zeb" --version
"$usr/bin/zeb" encode --size 256x192 --progress none -o "$movie" "$root/resources/demo/demo.mp4"
"$usr/bin/zeb" verify "$movie"
# With the command line that a file manager uses.
thumbnailer=$(sed -n 's/^Exec=//p' "$share/thumbnailers/zebmaker.thumbnailer")
thumbnailer=${thumbnailer//%s/64}
thumbnailer=${thumbnailer//%i/$movie}
(PATH=$usr/bin:$PATH && ${thumbnailer//%o/$scratch/small.png})
[[ $(head -c 8 "$scratch/small.png" | od -An -tx1 | tr -d ' \n') == 89504e470d0a1a0a ]] || fail "the thumbnail is no PNG"

# The MIME type, detected by content alone and by name alone.
update-mime-database "$share/mime" 2> /dev/null
cp "$movie" "$scratch/nameless"
echo unreadable > "$scratch/other.zeb"
for file in nameless demo.zeb; do
    gio info -a standard::content-type "$scratch/$file" | grep -q video/x-zeb || fail "$file: not taken for a movie"
done
gio info -a standard::fast-content-type "$scratch/other.zeb" | grep -q video/x-zeb || fail "*.zeb: not taken for a movie"

# The window must still be running after two seconds, without messages about missing modules.
status=0
QT_QUICK_BACKEND=software SDL_AUDIODRIVER=dummy \
    xvfb-run -a timeout 2 "$usr/bin/zebmaker" "$movie" > "$scratch/window.log" 2>&1 || status=$?
[[ $status == 124 ]] || fail "zebmaker ended with $status: $(cat "$scratch/window.log")"
grep -E 'qml:|\.qml:|is not installed|cannot load' "$scratch/window.log" && fail "zebmaker complains"

# Install the package like a user, only on a CI machine, where it can be removed again.
if [[ ${CI:-} == true && $EUID == 0 ]] && ! dpkg-query -W zebmaker > /dev/null 2>&1; then
    apt-get install -y "$package" > "$scratch/install.log" 2>&1 < /dev/null || { cat "$scratch/install.log"; exit 1; }
    trap 'apt-get purge -y zebmaker > /dev/null 2>&1 < /dev/null; rm -rf -- "$scratch"' EXIT
    for program in zeb zebmaker; do
        [[ $(command -v "$program") == /usr/bin/$program ]] || fail "$program was not installed"
        QT_QPA_PLATFORM=offscreen "$program" --version
    done
    zeb verify "$movie"
    man -w zebmaker zeb > /dev/null
    [[ $(gio info -a standard::content-type "$scratch/nameless") == *video/x-zeb* ]] || fail "the type is not known"
fi
echo "package: right"
