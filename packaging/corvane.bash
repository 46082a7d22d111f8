# Completion of corvane for bash.
_corvane_names() {
    corvane --json networks --wait 1 2>/dev/null |
        sed 's/},{/\n/g' | sed -n 's/.*"key":"\([^"]*\)".*/\1/p'
}

_corvane() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} word
    local commands='technologies networks show scan connect disconnect set power watch shell'
    case $previous in
    --library | --passphrase-file)
        compopt -o default
        return
        ;;
    --log)
        mapfile -t COMPREPLY < <(compgen -W '0 1 2 3' -- "$current")
        return
        ;;
    --ipc-send | =) # bash takes what follows the sign as a word of its own
        [[ $current == = ]] && current=''
        mapfile -t COMPREPLY < <(compgen -W "netcfg-dhcp-address-acquired \
            netcfg-static-address-configured netcfg-autoip-address-acquired" -- "$current")
        return
        ;;
    show | connect | disconnect | set)
        mapfile -t COMPREPLY < <(compgen -W "$(_corvane_names)" -- "$current")
        return
        ;;
    power)
        mapfile -t COMPREPLY < <(compgen -W 'wifi ethernet' -- "$current")
        return
        ;;
    wifi | ethernet)
        mapfile -t COMPREPLY < <(compgen -W 'on off' -- "$current")
        return
        ;;
    esac
    local options='--json --help --version --library --log --ipc-send'
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
        connect) options='--passphrase-file --wps --wait --json --help' commands='' ;;
        set) options='--dhcp --address --netmask --gateway --nameserver --wait --json --help' commands='' ;;
        watch | shell) options='--json --help' commands='' ;;
        technologies | networks | show | scan | disconnect | power)
            options='--wait --json --help' commands=''
            ;;
        esac
    done
    mapfile -t COMPREPLY < <(compgen -W "$commands $options" -- "$current")
}
complete -F _corvane corvane
