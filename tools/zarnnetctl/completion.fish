# Completion of zarnnetctl for fish. The program knows its own words: nothing of them stands here.
function __zarnnetctl_candidates
    set -l words (commandline -opc)[2..-1] (commandline -ct)
    set -l candidates (zarnnetctl __complete $words 2>/dev/null)
    if test "$candidates[1]" = ":files"
        __fish_complete_path (commandline -ct)
    else
        printf '%s\n' $candidates
    end
end
complete -c zarnnetctl -f -a '(__zarnnetctl_candidates)'
