# What ./demo plays, step by step, on the stage that tools/demo-scene has set. Sourced.
# shellcheck disable=SC2154

readonly home=wifi_020000000000_4d79204e65742d31_managed_psk
nStep=0
shownTraffic=0

Step() {
    nStep=$((nStep + 1))
    printf '\n%d. %s\n' "$nStep" "$1"
}

Tell() {
    printf '   %s\n' "$@"
}

#   Ask COMMAND-LINE EXPECTED     types at the host's prompt and shows what it says
Ask() {
    local before
    before=$(wc -c <"$scratch/said")
    printf '\n   corvane> %s\n' "$1"
    echo "$1" >&3
    Says() {
        tail -c +$((before + 1)) "$scratch/said" | grep -q "$1"
    }
    Await Says "$2"
    tail -c +$((before + 1)) "$scratch/said" | sed 's/^/   | /'
}

Translate() {
    awk -v host="$host" -v connman="$connman" -f "$here/demo-traffic.awk" "$scratch/traffic"
}

#   ShowTraffic EXPECTED     what went over D-Bus since the last time, up to where that is in it
ShowTraffic() {
    Went() {
        Translate | tail -n +$((shownTraffic + 1)) | grep -q "$1"
    }
    Await Went "$1"
    printf '\n   Over D-Bus:\n'
    Translate >"$scratch/lines"
    tail -n +$((shownTraffic + 1)) "$scratch/lines"
    shownTraffic=$(wc -l <"$scratch/lines")
}

StartMonitor() {
    StartAside dbus-monitor --system >"$scratch/traffic" 2>/dev/null
    Await grep -q NameLost "$scratch/traffic" # from there on it sees everything
}

StartHosts() {
    StartAside "${corvane[@]}" watch >"$scratch/watched" 2>&1
    Await grep -q "network 'Wired'" "$scratch/watched"
    Await grep -q "technology 'WiFi'" "$scratch/watched"
    mkfifo "$scratch/typed"
    exec 3<>"$scratch/typed" # what is written there, is typed
    StartAside "${corvane[@]}" shell <&3 >"$scratch/said" 2>&1
    Agents() {
        [[ $(grep -c 'member=RegisterAgent' "$scratch/traffic") == 2 ]]
    }
    Await Agents
    host=$(sed -n 's/.* sender=\(:[0-9.]*\) .*member=RegisterAgent$/\1/p' "$scratch/traffic" |
        tail -n 1)
}

# What the other host's plug-in has told it since it knows the networks.
ShowWatched() {
    tail -n +$((shownWatched + 1)) "$scratch/watched" | sed -n 's/^[0-9:]*  ! /   | /p' |
        sort | uniq -c | sed 's/^ *\([0-9]*\) \(.*\)/\2  (\1 times)/; s/  (1 times)$//'
}

ShowSettings() {
    (cd "$stored" && printf '   | %s\n' wifi_*)
}

# As ConnMan asks again: once a passphrase was handed over, there is none any more.
AskAgain() {
    local path=/net/connman/service/$home
    local fields='{"Passphrase": ["a{sv}", {"Type": ["s", "psk"], "Requirement": ["s", "mandatory"]}]}'
    printf '{"command": "call", "destination": "%s", "path": "%s", "interface": "%s", ' \
        "$host" /tovra/corvane/connman/agent net.connman.Agent >&4
    printf '"member": "RequestInput", "signature": "oa{sv}", "args": ["%s", %s]}\n' \
        "$path" "$fields" >&4
}

connman=$(OwnerOfConnMan)
StartMonitor
StartHosts
shownWatched=$(wc -l <"$scratch/watched")

Step "A host has loaded the plug-in, and reads"
Tell "The plug-in registers as ConnMan's agent and asks for its two lists; a reading copies them" \
    "into the host's records, without a message."
ShowTraffic 'answer: 2 technologies'
Ask technologies '^wifi '
Ask networks '^Wired '
Tell "" "WiFi settings that ConnMan has stored:"
ShowSettings

Step "The host wants My Net-1 connected, with a wrong passphrase"
Tell "It reads, sets connected and the passphrase in the record of My Net-1, and applies. The" \
    "plug-in sends what differs: Connect. ConnMan asks the agent; the answer is in the record."
echo "orange pie 7" >"$scratch/passphrase"
Ask "connect 'My Net-1' --passphrase-file $scratch/passphrase" 'The connection failed'
ShowTraffic 'is now: failure'

Step "The same with the right one"
echo "apple pie 42" >"$scratch/passphrase"
Ask "connect 'My Net-1' --passphrase-file $scratch/passphrase" '^Connected, address 192.168.178.41'
ShowTraffic 'is now: online'

Step "The device has an address: the plug-in tells the host"
Await grep -q 'event netcfg-dhcp-address-acquired' "$scratch/watched"
Tell "It calls the host's observer and RefreshIpSettings, then runs the host's program, which takes" \
    "the event to every host that runs. A second host, which only watches, was told:"
ShowWatched
Tell "Run by the plug-ins of the two hosts:"
sed 's/^/   | /' "$scratch/ran"

Step "The plug-in has removed the settings of all other WiFi networks"
OnlyHome() {
    [[ $(cd "$stored" && echo wifi_*) == "$home" ]]
}
Await OnlyHome
ShowSettings

Step "The next reading shows the network connected"
Ask networks '^My Net-1 .*connected'

Step "ConnMan asks again, and there is no passphrase any more: it is for one request"
AskAgain
ShowTraffic 'Passphrase (empty)'
Tell "" "That is the typical request, from end to end."
