# What the laboratories' commands have in common. Sourced; needs $name (the command) and Usage.

tree=build/dev
scripts=()

# Takes the command line; the scripts given after DEFAULT-SCRIPT... are run if none is named. Goes to
# the project's directory.
#   ReadCommandLine DEFAULT-SCRIPT... -- ARGUMENT...
ReadCommandLine() {
    local defaults=()
    while [[ $1 != -- ]]; do
        defaults+=("$1")
        shift
    done
    shift
    while (($#)); do
        case $1 in
        --tree)
            (($# > 1)) || Refuse "--tree takes a build tree"
            tree=$2
            shift
            ;;
        --shell) scripts=(lab/shell) ;;
        --help) Usage && exit 0 ;;
        -*) Refuse "unknown option $1" ;;
        *)
            [[ -f $1 && -r $1 ]] || Refuse "cannot read the script $1"
            scripts=("$(realpath "$1")")
            ;;
        esac
        shift
    done
    [[ -d $tree ]] || Refuse "there is no build tree $tree; ./check --quick builds build/dev"
    tree=$(realpath "$tree")
    cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." || exit 1
    ((${#scripts[@]})) || scripts=("${defaults[@]}")
}

Refuse() {
    echo "$name: $*; see $name --help" >&2
    exit 2
}

#   NeedBuilt PROGRAM...     of the build tree
NeedBuilt() {
    local program
    for program in "$@"; do
        [[ -x $tree/$program ]] || Refuse "there is no $tree/$program; ./check --quick builds one in build/dev"
    done
}

#   NeedOutside DIRECTORY...     which the laboratory covers
NeedOutside() {
    local covered
    for covered in "$@"; do
        [[ $PWD/ != "$covered"/* ]] || Cannot "the laboratory covers $covered, and the project is in it"
    done
}

#   Cannot REASON     on this machine
Cannot() {
    echo "$*" >&2
    exit 77
}

#   Unpack GROUP DIRECTORY     of tools/packages
Unpack() {
    tools/unpack-packages "$@" ||
        Cannot "the Debian packages that this takes cannot be fetched (tools/packages: $1)"
}

readonly apart=(unshare --mount --propagation private --net --pid --fork --kill-child --mount-proc)

NeedNamespaces() {
    local why
    why=$("${apart[@]}" mount -t sysfs none /sys 2>&1) ||
        Cannot "no namespaces of its own here (root is needed): ${why%%$'\n'*}"
}
