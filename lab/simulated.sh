# The simulated ConnMan in the real one's place: cables and access points are commands to it, and
# what the kernel and the access points would have is what it says. Sourced, after lab/stage.sh
# and lab/cables.sh: it takes over what differs.

declare -A names=([home]="My Net-1" [guests]="My Net-1 guests" [cafe]="Café am Eck"
    [comes-and-goes]="Comes and goes")
readonly off=/run/lab/off # access points that are switched off
readonly plugged=/run/lab/plugged

MakeOutside() {
    mkdir "$off" "$plugged"
    mkfifo /run/lab/control
    exec 8<>/run/lab/control
}

# --- ConnMan --------------------------------------------------------------------------------------

StartConnMan() {
    local silent
    if [[ -e /run/lab/scenario.json ]]; then
        Control '{command: "return"}'
    else
        mapfile -t silent < <(ls "$off")
        jq '.services |= map(select(.name | IN($ARGS.positional[]) | not))' lab/simulated.json \
            --args "${silent[@]}" >/run/lab/scenario.json
        "$tree/simulator/connman-sim" --scenario /run/lab/scenario.json --control - --record \
            <&8 >"$logs/connman-sim.log" 2>&1 &
    fi
    Await HasOwner net.connman
}

StopConnMan() {
    Control '{command: "leave"}'
}

#   Control COMMAND [JQ-ARGUMENT...]     an object, as jq writes it; see simulator/README.md
Control() {
    local before
    before=$(Answers | wc -l)
    jq -nc "$1" "${@:2}" >&8
    Await HasAnswered "$before" || Fail "the simulated ConnMan has not answered: $*"
    [[ $(Answers | tail -n 1) == *'"ok":true'* ]] || Fail "$* was answered: $(Answers | tail -n 1)"
}

# Beside them it writes the calls that come.
Answers() {
    grep '"ok":' "$logs/connman-sim.log"
}

HasAnswered() {
    (($(Answers | wc -l) > $1))
}

# --- what is outside ------------------------------------------------------------------------------

Cable() {
    local subnet=7${1#eth}
    case $2 in
    up)
        [[ ! -e $plugged/$1 ]] || return 0
        touch "$plugged/$1"
        Control '{command: "add-service", service: {type: "ethernet", name: "Wired",
            interface: $ARGS.positional[0], macAddress: "02:00:00:01:\($subnet):00",
            address: "192.168.\($subnet).50", gateway: "192.168.\($subnet).1",
            nameservers: ["192.168.\($subnet).1"], online: false}}' \
            --arg subnet "$subnet" --args "$1"
        ;;
    down)
        [[ -e $plugged/$1 ]] || return 0
        rm "$plugged/$1"
        OnService remove-service ".Ethernet.Interface == \"$1\""
        ;;
    esac
}

#   OnService COMMAND JQ-CONDITION [FIELDS]     of the first service for which that holds
OnService() {
    Control '{command: $command, path: $path} + $fields' --arg command "$1" \
        --arg path "$(Services "map(select($2))[0].path")" --argjson fields "${3:-{\}}"
}

AccessPoint() {
    local name=${names[$1]}
    case $2 in
    enable)
        rm "$off/$name"
        Control '{command: "add-service", service: $all[0].services[] | select(.name == $name)}' \
            --slurpfile all lab/simulated.json --arg name "$name"
        ;;
    disable)
        touch "$off/$name"
        [[ ! -e /run/lab/scenario.json ]] || OnService remove-service ".Name == \"$name\""
        ;;
    wps_pbc) OnService push-button ".Name == \"$name\"" ;;
    esac
}

Sends() {
    [[ ! -e $off/${names[$1]} ]]
}

Weaken() {
    SetStrength "$1" 30
}

Strengthen() {
    SetStrength "$1" 70
}

SetStrength() {
    OnService set-service-property ".Name == \"${names[$1]}\"" \
        "{\"name\": \"Strength\", \"value\": [\"y\", $2]}"
}

# --- what the kernel and the access points would have ---------------------------------------------

readonly connected='map(select(.State == "ready" or .State == "online"))'

Serves() {
    Service "${names[$1]}" '.State == "ready" or .State == "online"'
}

LinkedTo() {
    Serves "$1"
}

Addresses() {
    Services "$connected | .[] | select(.Ethernet.Interface == \"$1\") | .IPv4 | select(.Address) |
        \"\\(.Address)/\\({\"255.255.255.0\": 24}[.Netmask])\""
}

# The first connected service is the one in use.
HasRoute() {
    [[ $(Services "$connected[0] | [.IPv4.Gateway, .Ethernet.Interface] | @json") == \
        "[\"$1\",\"$2\"]" ]]
}

HasNoRoute() {
    [[ $(Services "$connected | length") == 0 ]]
}

IsUp() {
    HasPower wifi true
}
