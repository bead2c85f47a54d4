#compdef zarnnetctl
# Completion of zarnnetctl for zsh. The program knows its own words: nothing of them stands here.
local -a candidates
candidates=("${(@f)$(zarnnetctl __complete "${(@)words[2,CURRENT]}" 2>/dev/null)}")
if [[ $candidates[1] == :files* ]]; then
  _files
else
  candidates=("${(@)candidates//:/\\:}")
  candidates=("${(@)candidates//$'\t'/:}")
  _describe zarnnetctl candidates
fi
