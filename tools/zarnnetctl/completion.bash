# Completion of zarnnetctl for bash. The program knows its own words: nothing of them stands here.
_zarnnetctl() {
  local IFS=$'\n'
  COMPREPLY=($(zarnnetctl __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null | cut -f1))
  if [ "${COMPREPLY[0]-}" = :files ]; then
    COMPREPLY=($(compgen -f -- "${COMP_WORDS[COMP_CWORD]}"))
  fi
}

complete -F _zarnnetctl zarnnetctl
