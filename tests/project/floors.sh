#!/usr/bin/env bash
# Checks that each floor of the library uses only the floors below it, by its include lines and by the
# symbols that its objects need: floors.sh <source folder> <folder of objects> <nm>
set -euo pipefail
sources=$1 objects=$2 nm=$3

declare -A below=(
    [runtime]=""
    [binding]="runtime"
    [views]="runtime"
    [media]="runtime views"
    [web]="runtime views binding"
    [library]="runtime views binding media web"
)

# objects_of <floor>: those of today's sources. The build leaves the objects of removed ones behind.
objects_of() {
    local source object
    for source in "$sources/$1"/*.cpp; do
        object="$objects/$1/${source##*/}.o"
        [[ ! -e $object ]] || printf '%s\n' "$object"
    done
}

# symbols <floor> <kinds, as nm names them>
symbols() {
    objects_of "$1" | xargs -r "$nm" --format=posix \
        | awk -v kinds="$2" 'index(kinds, $2) { print $1 }' | sort -u
}

failures=0
complain() {
    failures=$((failures + 1))
    printf '%s\n' "$1"
}

for floor in "${!below[@]}"; do
    [[ -n $(objects_of "$floor") ]] || complain "no objects of $floor in $objects"
    for other in "${!below[@]}"; do
        [[ $other != "$floor" && " ${below[$floor]} " != *" $other "* ]] || continue
        while IFS= read -r line; do
            complain "$floor includes $other: $line"
        done < <(grep -rn "#include \"$other/" "$sources/$floor" || true)
        while IFS= read -r symbol; do
            complain "$floor uses $other: $symbol"
        done < <(comm -12 <(symbols "$floor" U) <(symbols "$other" TDBR) | c++filt)
    done
done
[[ $failures -eq 0 ]] || { echo "$failures uses of a floor that is not below"; exit 1; }
echo "each floor uses only those below it"
