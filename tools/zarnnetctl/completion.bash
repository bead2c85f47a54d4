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
    0) echo "if ip ipv6 dns gateway route link mac mtu hostname block tunnel card1 rename port ping lookup wake stat --help --version" ;;
    1)
      case $group in
        if) echo "list show --help" ;;
        ip) echo "get set flush --help" ;;
        ipv6) echo "get set add del init --help" ;;
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
        tunnel\ *) echo "--json --help" ;;
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
