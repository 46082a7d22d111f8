# Two cables, eth0 and eth1; at the other end of each a router that gives addresses. Sourced.

# The router at the end of eth0 is 192.168.70.1, of eth1 192.168.71.1; it gives .50 to .99.
MakeCables() {
    mkdir -p /run/netns
    ip netns add far
    ip netns exec far ip link set lo up
    for n in 0 1; do
        ip link add "eth$n" address "02:00:00:00:7$n:00" type veth peer name "far$n" netns far
        # ConnMan reads offers itself, and drops those without a checksum.
        ip netns exec far ethtool -K "far$n" tx off >/dev/null
        ip netns exec far ip address add "192.168.7$n.1/24" dev "far$n"
        StartDhcpServer "$n"
    done
}

StartDhcpServer() {
    ip netns exec far dnsmasq --conf-file=/dev/null --keep-in-foreground --user=root --pid-file \
        --interface="far$1" --except-interface=lo --bind-interfaces --no-resolv --no-hosts \
        --dhcp-range="192.168.7$1.50,192.168.7$1.99,1h" --dhcp-leasefile="/run/lab/leases$1" \
        --dhcp-authoritative --no-ping --log-dhcp --log-facility="$logs/dnsmasq.log" &
}

#   Cable INTERFACE up|down     plugs it in and pulls it out, at the far end
Cable() {
    ip netns exec far ip link set "far${1#eth}" "$2"
}
