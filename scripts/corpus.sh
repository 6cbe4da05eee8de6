#!/bin/bash
# Fetches the foreign sources that the producer is checked on, in fixed versions, and makes a compile database of each:
#   scripts/corpus.sh [NAME...]      all when no name is given
# gives corpus/NAME/src and corpus/NAME/build/compile_commands.json. Installs what is missing; beyond that nothing of the
# machine's package setup is changed: the source lists, the package index and the downloads are private to corpus/.
set -euo pipefail

# name, version of the Debian source package, how the database comes about, what to build
packages="
re2      20220601+dfsg-1  make   REBUILD_TABLES=1 obj/libre2.a
libyaml  0.2.5-1       cmake
sqlite3  3.40.1-2+deb12u2  configure  sqlite3.c sqlite3.lo
"

root=$(cd "$(dirname "$0")/.." && pwd)
corpus=$root/corpus
apt_state=$corpus/.apt
apt_options=(
    -o Dir::Etc::sourcelist="$apt_state/sources.list"
    -o Dir::Etc::sourceparts=-
    -o Dir::State::lists="$apt_state/lists"
    -o Dir::Cache="$apt_state/cache"
    -o APT::Get::List-Cleanup=0
    -o Acquire::Languages=none
    -o APT::Sandbox::User="$(id -un)" # may write below the home of whoever runs this
)

die() {
    echo "corpus.sh: $*" >&2
    exit 2
}

# The configured mirrors, asked for sources in place of binary packages.
prepare_apt() {
    mkdir -p "$apt_state/lists/partial" "$apt_state/cache/archives/partial"
    apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' 'Created-By: Packages' |
        sort -u | sed 's/^/deb-src /' >"$apt_state/sources.list"
    [ -s "$apt_state/sources.list" ] || die "apt knows no repository; run apt-get update first"
    apt-get "${apt_options[@]}" -qq update
}

fetch() {
    local name=$1 version=$2 target=$corpus/$1/src
    [ -d "$target" ] && return
    mkdir -p "$corpus/$name"
    (
        cd "$corpus/$name"
        apt-get "${apt_options[@]}" -qq source --download-only "$name=$version" ||
            die "$name $version is not in the configured repositories"
        dpkg-source --no-check -x ./*.dsc src.part >/dev/null
        mv src.part src
    )
}

# A database of make takes a real build, so that one is as cheap as can be.
database() {
    local name=$1 way=$2 target=$3 source=$corpus/$1/src build=$corpus/$1/build
    [ -s "$build/compile_commands.json" ] && return
    mkdir -p "$build"
    case $way in
    cmake)
        cmake -S "$source" -B "$build" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON -DCMAKE_BUILD_TYPE=Release >/dev/null
        ;;
    configure)
        # One object, so that the database has each unit once; the first target is made from others and is no unit.
        (cd "$build" && sh "$source/configure" --disable-shared --disable-tcl --disable-readline >/dev/null)
        make -C "$build" "${target%% *}" >/dev/null
        bear --output "$build/compile_commands.json" -- \
            make -C "$build" CFLAGS=-O0 ${target#* } >/dev/null
        ;;
    make)
        bear --output "$build/compile_commands.json" -- \
            make -C "$source" -j2 CFLAGS=-O0 CXXFLAGS=-O0 $target >/dev/null
        ;;
    *) die "$name: no way called $way" ;;
    esac
    [ -s "$build/compile_commands.json" ] || die "$name: the build gave no compile database"
}

"$root/scripts/setup.sh" --corpus
wanted=" ${*:-$(awk 'NF { printf "%s ", $1 }' <<<"$packages")} "
is_prepared=
while read -r name version way target; do
    [ -n "$name" ] && [[ $wanted == *" $name "* ]] || continue
    if [ ! -d "$corpus/$name/src" ] && [ -z "$is_prepared" ]; then
        prepare_apt
        is_prepared=1
    fi
    fetch "$name" "$version"
    database "$name" "$way" "$target"
    echo "$corpus/$name/build/compile_commands.json"
done <<<"$packages"
