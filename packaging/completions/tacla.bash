# Completion of tacla's commands and of the titles that "tacla list" shows, which is all that it ever runs.
_tacla_quote() { # the title as it is typed behind the quote that was begun, if one was
    case $word in
        \"*) title=${title//\\/\\\\} title=${title//\"/\\\"} title=${title//\$/\\\$} title=${title//\`/\\\`} ;;
        \'*) title=${title//\'/\'\\\'\'} ;;
        *) printf -v title %q "$title" ;;
    esac
}
_tacla() {
    local word=${COMP_WORDS[COMP_CWORD]} title typed
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "list done rename sync" -- "$word")
    elif [ "$COMP_CWORD" -eq 2 ] && [[ ${COMP_WORDS[1]} == done || ${COMP_WORDS[1]} == rename ]]; then
        typed=${word#[\"\']}
        typed=${typed//\\/}
        while IFS= read -r title; do
            [[ ${title,,} == "${typed,,}"* ]] && _tacla_quote && COMPREPLY+=("$title")
        done < <(tacla list 2> /dev/null | sed -E 's/^[^ ]+ (❗ *)?//
            s/ · [0-9]{4}-[0-9]{2}-[0-9]{2}( [0-9]{2}:[0-9]{2})?( \(due le [-0-9]+\))?$//')
    fi
}
complete -o nosort -F _tacla tacla
