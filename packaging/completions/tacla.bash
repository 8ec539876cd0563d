# Completion of tacla's commands and of the titles of open tasks. Only ever runs "tacla list".
_tacla() {
    local word=${COMP_WORDS[COMP_CWORD]} title
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "list done rename sync" -- "$word")
    elif [ "$COMP_CWORD" -eq 2 ] && [[ ${COMP_WORDS[1]} == done || ${COMP_WORDS[1]} == rename ]]; then
        while IFS= read -r title; do
            [[ ${title,,} == "${word,,}"* ]] && COMPREPLY+=("$(printf '%q' "$title")")
        done < <(tacla list 2> /dev/null | sed 's/^[^ ]* //; s/ · .*//; s/^❗ *//')
    fi
}
complete -F _tacla tacla
