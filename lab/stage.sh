# What both laboratories stand on: a device's world with the real ConnMan in it, and looks at what
# the kernel and the daemons have. Sourced, as root, in network, mount and PID namespaces of its own.
# Needs $tree (a build tree), $daemons (unpacked packages), $logs (a directory), and $script.

readonly library=$tree/Libraries/TargetSpecificKX22/libcorvane_KX22.so
readonly storage=/opt/userdata/connman
readonly sent=/run/lab/sent # how the plug-in ran the host's command, a line a time
readonly corvane=$tree/corvane/corvane
readonly watched=$logs/watched.json

# --- the device -----------------------------------------------------------------------------------

# The paths of a device: its system bus with Debian's own configuration, the policies of ConnMan,
# wpa_supplicant and the plug-in, and ConnMan's settings where the plug-in looks for them.
MakeDevice() {
    mount -t tmpfs none /run
    mount -t tmpfs none /opt
    mount -t tmpfs none /var/lib
    mount -t sysfs none /sys # with the interfaces of this network namespace
    mkdir -p /run/dbus /run/lab/policies "$storage" /var/lib/connman /opt/tovra/bin
    mount --bind "$storage" /var/lib/connman
    touch /run/lab/resolv.conf
    [[ ! -e /etc/resolv.conf ]] || mount --bind /run/lab/resolv.conf /etc/resolv.conf
    cp "$daemons"/usr/share/dbus-1/system.d/connman.conf "$daemons"/etc/dbus-1/system.d/* \
        packaging/corvane-connman.conf /run/lab/policies/
    printf '#!/bin/sh\necho "$*" >>%s\nexec %s "$@"\n' "$sent" "$corvane" \
        >/opt/tovra/bin/corvane
    chmod +x /opt/tovra/bin/corvane
    touch "$sent" "$watched" "$logs/corvane.log"
    Mark
    export XDG_RUNTIME_DIR=/run
    ip link set lo up
}

StartBus() {
    cat >/run/lab/bus.conf <<'CONF'
<busconfig>
  <include>/usr/share/dbus-1/system.conf</include>
  <includedir>/run/lab/policies</includedir>
</busconfig>
CONF
    dbus-daemon --config-file=/run/lab/bus.conf --nofork --nopidfile --nosyslog \
        2>"$logs/bus.log" &
    Await dbus-send --system --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetId
    dbus-monitor --system >"$logs/bus.txt" 2>/dev/null &
}

#   StartConnMan [OPTION...]
StartConnMan() {
    "$daemons/usr/sbin/connmand" --nodaemon --debug --config="$daemons/etc/connman/main.conf" "$@" \
        >>"$logs/connmand.log" 2>&1 &
    echo $! >/run/lab/connmand.pid
    Await HasOwner net.connman
}

StopConnMan() {
    kill "$(cat /run/lab/connmand.pid)"
    Await Not HasOwner net.connman
}

# --- waiting, and telling -------------------------------------------------------------------------

# Until COMMAND succeeds, looking every $pause seconds; for at most $patience seconds.
patience=30 pause=0.05
Await() {
    local end=$((SECONDS + patience))
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < end)) || return 1
        sleep "$pause"
    done
}

#   Expect COMMAND...     a condition that comes to hold; ends the scenario where it does not
Expect() {
    Await "$@" || Fail "never came true: $*"
}

#   ExpectNow COMMAND...     a condition that holds already
ExpectNow() {
    "$@" >/dev/null 2>&1 || Fail "is not true: $*"
}

Fail() {
    echo "    $*"
    Facts | sed 's/^/      /'
    exit 1
}

#   CountOnBus PATTERN     of the messages, as dbus-monitor shows their first lines
CountOnBus() {
    grep -c "$1" "$logs/bus.txt"
}

# What there is to know when something is not as expected.
Facts() {
    ip -br address
    ip route
    Services '.[] | [.Name, .Type, .State, .path, .IPv4.Method, .IPv4.Address, .Nameservers] | @json'
    ls "$storage"
    Heard
    tail -n 8 "$logs/corvane.log" | cut -c 1-300
}

Not() {
    ! "$@"
}

passed=0

#   Scenario TEXT FUNCTION     in a process of its own. Each begins where the one before has ended,
#   so the first thing that is wrong ends them all.
Scenario() {
    local start=${EPOCHREALTIME/./} result=ok
    Mark
    ("$2") || result=FAILED
    printf '%-6s %5.1f s  %s\n' "$result" "$(((${EPOCHREALTIME/./} - start) / 100000))e-1" "$1"
    [[ $result == ok ]] || Conclude 1
    passed=$((passed + 1))
}

# The last line, and the exit status.
Conclude() {
    echo "$passed of $(grep -c '^Scenario ' "$script") scenarios passed"
    exit "$1"
}

# --- the plug-in in its host ----------------------------------------------------------------------

# A host that stays, and writes down all that it is told.
StartWatch() {
    "$corvane" --library "$library" --json --log 0 watch \
        >"$watched" 2>>"$logs/corvane.log" &
}

# One command of a host that comes and goes; its answer is in $answer. Returns its exit status.
answer=''
Corvane() {
    local status=0
    echo "corvane $*" >>"$logs/corvane.log"
    answer=$("$corvane" --library "$library" --json --log 0 "$@" \
        2>>"$logs/corvane.log") || status=$?
    printf '%s\nstatus %s\n' "$answer" "$status" >>"$logs/corvane.log"
    return "$status"
}

#   Succeeds COMMAND...     of corvane's, and so it must
Succeeds() {
    Corvane "$@" || Fail "corvane $* ended with status $?: $answer"
}

#   Ends STATUS COMMAND...     of corvane's
Ends() {
    local status=0
    Corvane "${@:2}" || status=$?
    ((status == $1)) || Fail "corvane ${*:2} ended with status $status, not $1: $answer"
}

# From here on counts what is heard.
Mark() {
    heardBefore=$(wc -l <"$watched")
    sentBefore=$(wc -l <"$sent")
    loggedBefore=$(wc -l <"$logs/corvane.log")
}

# What the watching host was told since: the words, "refresh", and the events.
Heard() {
    tail -n "+$((heardBefore + 1))" "$watched" | jq -r '
        if .event == "networks-changed" then "word\(.flags)"
        elif .event == "refresh" then .event
        elif .event == "ipc" then .name else empty end'
}

#   HeardInOrder WHAT...     whether these came in this order, whatever came between
HeardInOrder() {
    Heard | awk -v "wanted=$*" '
        BEGIN { n = split(wanted, want, " "); i = 1 }
        i <= n && $0 == want[i] { i++ }
        END { exit i <= n }'
}

#   LastHeard EVENT     whether it is the last of the events
LastHeard() {
    [[ $(Heard | grep '^netcfg-' | tail -n 1) == "$1" ]]
}

# The events of which the plug-in told by the host's command since, oldest first.
Sent() {
    tail -n "+$((sentBefore + 1))" "$sent" | sed -n 's/^--ipc-send=netcfg-\(.*\)/\1/p'
}

LastSent() {
    [[ $(Sent | tail -n 1) == "$1" ]]
}

NothingSent() {
    [[ ! $(Sent) ]]
}

#   Logged TEXT     by the plug-in of any host
Logged() {
    tail -n "+$((loggedBefore + 1))" "$logs/corvane.log" | grep -qF "$1"
}

# For a story: a command of corvane's, or something else that happens, for people to read.
Play() {
    local word line='$ corvane'
    for word in "$@"; do
        [[ $word != *' '* ]] || word="'$word'"
        line+=" $word"
    done
    printf '\n%s\n' "$line"
    "$corvane" --library "$library" "$@" 2>>"$logs/corvane.log"
}

#   Aside WHAT COMMAND...
Aside() {
    printf '\n(one %s)\n' "$1"
    "${@:2}"
}

# What the watching host's records show of a network or technology, as the last line told.
#   Shows NAME JQ-CONDITION
Shows() {
    jq -es --arg name "$1" "map(select(.network.name == \$name and .event != \"network-removed\")
        .network) | last | $2" "$watched"
}

#   Told JQ-CONDITION     of one line that the watching host has written since
Told() {
    tail -n "+$((heardBefore + 1))" "$watched" | jq -es "any(.[]; $1)"
}

#   ReadsNow NAME JQ-CONDITION     what a host that comes now reads
ReadsNow() {
    Corvane show "$1" && jq -e ".network | $2" <<<"$answer"
}

# A host that stays and does what it is told.
StartHost() {
    mkfifo /run/lab/commands
    "$corvane" --library "$library" --json --log 0 shell \
        </run/lab/commands >/run/lab/answers 2>>"$logs/corvane.log" &
    exec 7>/run/lab/commands
}

#   Host COMMAND...     of corvane's, by that host; its answer is in $answer
Host() {
    Ask "done" "$@"
}

#   HostFails COMMAND...     the same, if the network cannot be connected
HostFails() {
    Ask failed "$@"
}

#   Ask RESULT COMMAND...     RESULT is a pattern
Ask() {
    local before
    before=$(wc -l </run/lab/answers)
    echo "${*:2}" >&7
    Await Answered "$before" || Fail "the host did not answer: ${*:2}"
    answer=$(tail -n 1 /run/lab/answers)
    [[ $(jq -r '.result // "done"' <<<"$answer") =~ ^$1$ ]] || Fail "the host, to ${*:2}: $answer"
}

Answered() {
    (($(wc -l </run/lab/answers) > $1))
}

# --- what the kernel and ConnMan have -------------------------------------------------------------

HasOwner() {
    busctl --system call org.freedesktop.DBus / org.freedesktop.DBus NameHasOwner s "$1" |
        grep -q true
}

#   Services JQ-EXPRESSION     of a list of objects: the services' properties, and their path
Services() {
    busctl --system --json=short call net.connman / net.connman.Manager GetServices |
        jq -r "def plain: if type == \"object\" and has(\"data\") then .data | plain
                          elif type == \"object\" then map_values(plain) else . end;
               .data[0] | map(.[0] as \$path | .[1] | plain | .path = \$path) | $1"
}

#   Service NAME JQ-CONDITION     whether it holds for the first service of that name
Service() {
    [[ $(Services "map(select(.Name == \"$1\"))[0] // {} | $2") == true ]]
}

#   Listed NAME     whether ConnMan lists the network
Listed() {
    [[ $(Services "any(.[]; .Name == \"$1\")") == true ]]
}

#   Technology TYPE PROPERTY     prints it
Technology() {
    busctl --system --json=short call net.connman / net.connman.Manager GetTechnologies |
        jq -r ".data[0][] | .[1] | select(.Type.data == \"$1\") | .$2.data"
}

HasPower() {
    [[ $(Technology "$1" Powered) == "$2" ]]
}

#   HasAddress INTERFACE PATTERN
HasAddress() {
    Addresses "$1" | grep -qE "^$2\$"
}

HasNoAddress() {
    [[ ! $(Addresses "$1") ]]
}

#   AddressOf INTERFACE     prints the first, without the length of its prefix
AddressOf() {
    Addresses "$1" | sed 's/\/.*//;q'
}

#   Addresses INTERFACE     prints them, with the lengths of their prefixes
Addresses() {
    ip -4 -br address show dev "$1" | awk '{ for (i = 3; i <= NF; i++) print $i }'
}

#   HasRoute GATEWAY INTERFACE
HasRoute() {
    ip -4 route | grep -q "^default via $1 dev $2"
}

HasNoRoute() {
    ! ip -4 route | grep -q '^default'
}

#   IsStored / IsNotStored PATTERN     a service's directory
IsStored() {
    compgen -G "$storage/$1/settings"
}

IsNotStored() {
    ! compgen -G "$storage/$1"
}
