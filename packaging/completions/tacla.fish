# Completion of tacla's commands and of the titles that "tacla list" shows, which is all that it ever runs.
function __tacla_titles
    tacla list 2>/dev/null | string replace -r '^\S+ (❗ *)?' '' |
        string replace -r ' · \d{4}-\d\d-\d\d( \d\d:\d\d)?( \(due le [-\d]+\))?$' ''
end
function __tacla_wants_title
    __fish_seen_subcommand_from done rename; and test (count (commandline -opc)) -eq 2
end
complete -c tacla -f
complete -c tacla -n __fish_use_subcommand -a list -d 'Tâches du jour et en retard'
complete -c tacla -n __fish_use_subcommand -a done -d 'Cocher une tâche'
complete -c tacla -n __fish_use_subcommand -a rename -d 'Renommer une tâche'
complete -c tacla -n __fish_use_subcommand -a sync -d 'Recopier dans Google Agenda'
complete -c tacla -k -n __tacla_wants_title -a '(__tacla_titles)'
