# Completion of zarnnetctl for bash: verbs, options, names of interfaces and of block flags.
# It stands alone, without the helpers of the bash-completion package.

_zarnnetctl_interfaces() {
  local path
  for path in /sys/class/net/*; do
    # bonding_masters and the like are files.
    [ -d "$path" ] && printf '%s\n' "${path##*/}"
  done
}

# What may follow the words so far, given as arguments without the program's name.
_zarnnetctl_candidates() {
  local group=${1-} verb=${2-}
  case $# in
    0)
      echo "if ip ipv6 dns gateway route bond bridge vlan topology conflict tree dhcpd pppoe pppoe-relay tunnel"
      echo "link mac mtu hostname block stat port ping lookup wake card1 rename --help --version"
      ;;
    1)
      case $group in
        if) echo "list show --help" ;;
        ip) echo "get set flush --help" ;;
        ipv6) echo "get set add del init --help" ;;
        dhcpd) echo "status enable disable restart subnet option range vendor pxe --help" ;;
        bond) echo "list show set delete --help" ;;
        bridge) echo "list show set --help" ;;
        vlan) echo "list create remove --help" ;;
        topology) echo "get set --help" ;;
        conflict) echo "--json --help"; _zarnnetctl_interfaces ;;
        tree) echo "--json --help" ;;
        dns) echo "get set mode update --help" ;;
        gateway) echo "get set clear --help" ;;
        route) echo "check add del --help" ;;
        mtu | hostname) echo "get set --help" ;;
        stat) echo "--watch --interval --count --json --help"; _zarnnetctl_interfaces ;;
        link) echo "up down --help" ;;
        mac) echo "--json --local --help"; _zarnnetctl_interfaces ;;
        block) echo "get set --help" ;;
        card1) echo "get set --help" ;;
        port) echo "--proto --json --help" ;;
        ping) echo "--timeout --json --help" ;;
        lookup) echo "--json --help" ;;
        wake | rename) echo "--json --help"; _zarnnetctl_interfaces ;;
        pppoe) echo "get set start stop status --help" ;;
        pppoe-relay) echo "get set apply clear --help" ;;
        tunnel) echo "get set start stop restart --help" ;;
      esac
      ;;
    *)
      case "$group $verb" in
        "if list")
          if [ "${!#}" = --kind ]; then echo "eth all"; else echo "--kind --json --help"; fi
          ;;
        "ip flush") echo "-4 -6 --json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces ;;
        "link up" | "link down") echo "--json --help"; _zarnnetctl_interfaces ;;
        "block set")
          echo "--clear --json --help"
          if [ $# -gt 2 ]; then echo "ha aha virtual quendar"; else _zarnnetctl_interfaces; fi
          ;;
        "ipv6 set")
          echo "--gateway --json --help"
          case $# in 2) _zarnnetctl_interfaces ;; 3) echo "auto off dhcp static auto_dhcp" ;; esac
          ;;
        "ipv6 add" | "ipv6 del") echo "--gateway --json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces ;;
        "tunnel set")
          if [ "${!#}" = --password-file ]; then compgen -f -- ""; else
            echo "--server --anonymous --user --password-file --json --help"
          fi
          ;;
        "pppoe set")
          case ${!#} in
            --interface) _zarnnetctl_interfaces ;;
            --password-file) compgen -f -- "" ;;
            *) echo "--interface --user --mtu --default-route --no-default-route --password-file --json --help" ;;
          esac
          ;;
        "pppoe-relay set")
          if [ "${!#}" = --server ]; then _zarnnetctl_interfaces; else
            echo "--server --enable --disable --json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces
          fi
          ;;
        pppoe\ * | "pppoe-relay clear") echo "--json --help" ;;
        tunnel\ *) echo "--json --help" ;;
        "dhcpd subnet") [ $# -gt 2 ] && _zarnnetctl_interfaces || echo "list show set --help" ;;
        "dhcpd vendor") echo "list show set --help" ;;
        "dhcpd pxe") echo "show set --help" ;;
        "dhcpd option") echo "list --help" ;;
        "dhcpd range") [ $# -gt 2 ] && _zarnnetctl_interfaces || echo "check --help" ;;
        "dhcpd status" | "dhcpd restart") echo "--json --help" ;;
        "dhcpd enable" | "dhcpd disable") echo "-6 --json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces ;;
        "bond set")
          if [ "${!#}" = --mode ]; then
            echo "balance-alb 802.3ad balance-xor active-backup balance-rr"
          else
            echo "--mode --json --help"; _zarnnetctl_interfaces
          fi
          ;;
        "bridge set")
          echo "--address --dhcp --no-boot --json --help"
          if [ $# -eq 3 ]; then echo "none port bridge local-bridge"; else _zarnnetctl_interfaces; fi
          ;;
        "topology set") echo "unknown client bridge router --json --help" ;;
        "bond list" | "bridge list" | "vlan list" | "topology get" | conflict\ *) echo "--json --help" ;;
        "vlan create") echo "--address --json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces ;;
        "dns mode") echo "static auto --json --help" ;;
        gateway\ *) echo "--saved --json --help" ;;
        "ipv6 init" | "route check" | dns\ * | hostname\ *) echo "--json --help" ;;
        port\ *) if [ "${!#}" = --proto ]; then echo "tcp udp"; else echo "--proto --json --help"; fi ;;
        "card1 set") echo "dhcp --json --help" ;;
        card1\ * | ping\ * | lookup\ * | wake\ * | rename\ *) echo "--json --help" ;;
        stat\ *) echo "--watch --interval --count --json --help"; _zarnnetctl_interfaces ;;
        mac\ *) echo "--json --local --help" ;;
        *) echo "--json --help"; [ $# -gt 2 ] || _zarnnetctl_interfaces ;;
      esac
      ;;
  esac
}

_zarnnetctl() {
  local before=("${COMP_WORDS[@]:1:COMP_CWORD-1}")
  mapfile -t COMPREPLY < <(compgen -W "$(_zarnnetctl_candidates "${before[@]}")" -- "${COMP_WORDS[COMP_CWORD]}")
}

complete -F _zarnnetctl zarnnetctl
