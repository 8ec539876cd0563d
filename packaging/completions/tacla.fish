# Completion of tacla's commands and of the titles of open tasks. Only ever runs "tacla list".
function __tacla_titles
    tacla list 2>/dev/null | string replace -r '^\S+ (❗ *)?' '' | string replace -r ' · .*' ''
end
complete -c tacla -f
complete -c tacla -n __fish_use_subcommand -a list -d 'Tâches du jour et en retard'
complete -c tacla -n __fish_use_subcommand -a done -d 'Cocher une tâche'
complete -c tacla -n __fish_use_subcommand -a rename -d 'Renommer une tâche'
complete -c tacla -n __fish_use_subcommand -a sync -d 'Recopier dans Google Agenda'
complete -c tacla -n '__fish_seen_subcommand_from done rename' -a '(__tacla_titles)'
