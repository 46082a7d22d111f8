# The access points, each on a radio of its own, with a router of its own behind it. Sourced, after
# lab/cables.sh. The device's radio is wlan0.

readonly station=02:00:00:00:00:00 # the device's

declare -A radios

MakeAccessPoints() {
    MakeAccessPoint home 1 "My Net-1" "apple pie 42" \
        wps_state=2 eap_server=1 "config_methods=push_button virtual_push_button"
    MakeAccessPoint guests 2 "My Net-1 guests" "welcome guests"
    MakeAccessPoint cafe 3 "Café am Eck" ""
    MakeAccessPoint hidden 4 "Cellar" "down the stairs" ignore_broadcast_ssid=1
    MakeAccessPoint comes-and-goes 5 "Comes and goes" "here and gone"
}

#   NAME RADIO SSID PASSPHRASE [LINE OF hostapd.conf...]     the router's subnet is 80 + RADIO
MakeAccessPoint() {
    local name=$1 radio=$2
    radios[$name]=wlan$radio
    MakeLine "air$radio" "8$radio"
    ip netns exec far ip link set "far8$radio" up
    ip link add "bridge$radio" type bridge
    ip link set "air$radio" master "bridge$radio"
    ip link set "air$radio" up
    ip link set "bridge$radio" up
    {
        printf '%s\n' "interface=wlan$radio" "bridge=bridge$radio" driver=nl80211 \
            ctrl_interface=/run/hostapd hw_mode=g channel=1 "ssid=$3" "${@:5}"
        [[ ! $4 ]] ||
            printf '%s\n' wpa=2 wpa_key_mgmt=WPA-PSK rsn_pairwise=CCMP "wpa_passphrase=$4"
    } >"/run/lab/hostapd-$name.conf"
    "$daemons/usr/sbin/hostapd" -f "$logs/hostapd-$name.log" "/run/lab/hostapd-$name.conf" &
}

#   AccessPoint NAME enable|disable|wps_pbc|...     a command of hostapd's
AccessPoint() {
    "$daemons/usr/sbin/hostapd_cli" -p /run/hostapd -i "${radios[$1]}" "${@:2}"
}

#   Serves NAME     whether the access point has let the device in. One that was left may not know.
Serves() {
    AccessPoint "$1" sta "$station" | grep -q '^flags=.*AUTHORIZED'
}

#   LinkedTo NAME     whether the kernel says so
LinkedTo() {
    iw dev wlan0 link | grep -q "^Connected to 02:00:00:00:0${radios[$1]#wlan}:00 "
}

#   Weaken / Strengthen NAME     what the access point sends
Weaken() {
    iw dev "${radios[$1]}" set txpower fixed 300
}

Strengthen() {
    iw dev "${radios[$1]}" set txpower auto
}

# Whether the device's radio is on, as the kernel has it.
IsUp() {
    ip link show dev wlan0 | grep -q '<.*[<,]UP[,>]'
}

#   Sends NAME     whether the access point is on
Sends() {
    AccessPoint "$1" status | grep -q '^state=ENABLED'
}

StartSupplicant() {
    "$daemons/sbin/wpa_supplicant" -u -t -f "$logs/wpa_supplicant.log" &
    Await HasOwner fi.w1.wpa_supplicant1
}
