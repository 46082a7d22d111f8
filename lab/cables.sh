# Lines to routers that give addresses, and the cables eth0 and eth1. Sourced, after lab/stage.sh.

# The router at the end of eth0 is 192.168.70.1, of eth1 192.168.71.1; all give .50 to .99.
MakeCables() {
    mkdir -p /run/netns
    ip netns add far
    ip netns exec far ip link set lo up
    MakeLine eth0 70
    MakeLine eth1 71
}

#   MakeLine INTERFACE SUBNET     the far end is farSUBNET, and down
MakeLine() {
    ip link add "$1" address "02:00:00:01:$2:00" type veth peer name "far$2" netns far
    # ConnMan reads offers itself, and drops those without a checksum.
    ip netns exec far ethtool -K "far$2" tx off >/dev/null
    ip netns exec far ip address add "192.168.$2.1/24" dev "far$2"
    ip netns exec far dnsmasq --conf-file=/dev/null --keep-in-foreground --user=root --pid-file \
        --interface="far$2" --except-interface=lo --bind-interfaces --no-resolv --no-hosts \
        --dhcp-range="192.168.$2.50,192.168.$2.99,1h" --dhcp-leasefile="/run/lab/leases$2" \
        --dhcp-authoritative --no-ping --log-dhcp --log-facility="$logs/dnsmasq.log" &
}

#   Cable INTERFACE up|down     plugs it in and pulls it out, at the far end
Cable() {
    ip netns exec far ip link set "far7${1#eth}" "$2"
}

# What the router of a subnet gives, as a pattern for HasAddress.
Leased() {
    echo "192\.168\.$1\.[5-9][0-9]/24"
}
