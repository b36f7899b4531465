# bash completion for zvr_al_gen_url_list

# Scenarios of the installation: by name alone those of the default workspace, and all of them as
# workspace/profile/project/sub-project/name.
_zvr_al_gen_url_list_scenarios() {
    local file place profile
    for file in "$ZV_WDIR"/workspace/admin/default/quarvel/default/default/scenarios/*.conf; do
        [[ -e $file ]] && basename "$file" .conf
    done
    for file in "$ZV_WDIR"/workspace/*/*/quarvel/*/*/scenarios/*.conf; do
        [[ -e $file ]] || continue
        place=${file#"$ZV_WDIR"/workspace/}
        profile=${place%%/quarvel/*}
        place=${place#*/quarvel/}
        place=${place%.conf}
        printf '%s\n' "$profile/${place/\/scenarios\//\/}"
    done
}

# Replay profiles of the installation, those of the default project by name alone.
_zvr_al_gen_url_list_profiles() {
    local file place
    for file in "$ZV_WDIR"/replay_profiles/*/*/*/replay_settings.dat; do
        [[ -e $file ]] || continue
        place=${file#"$ZV_WDIR"/replay_profiles/}
        place=${place%/replay_settings.dat}
        printf '%s\n' "${place#default/default/}"
    done
}

_zvr_al_gen_url_list_words() {
    case $1 in
    -s | --scenario) [[ -n ${ZV_WDIR-} ]] && _zvr_al_gen_url_list_scenarios ;;
    -r | --replay_profile) [[ -n ${ZV_WDIR-} ]] && _zvr_al_gen_url_list_profiles ;;
    -d | --debug) echo 1 2 3 4 ;;
    -m | --mode) echo cli gui ;;
    -q | --dump_query_url) echo 0 1 ;;
    -t | --num_thread) seq 0 "$(getconf _NPROCESSORS_ONLN)" ;;
    *)
        echo --scenario --debug --mode --replay_profile --num_thread --commentry \
            --dump_query_url --akaau_trace
        ;;
    esac
}

# Completes by the words that the given function prints for an option, or for none.
_zvr_al_gen_url_list_complete() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]}
    if [[ $word == = ]]; then # --option= with nothing after it yet
        word=
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    mapfile -t COMPREPLY < <(compgen -W "$("$1" "$option")" -- "$word")
}

_zvr_al_gen_url_list() {
    _zvr_al_gen_url_list_complete _zvr_al_gen_url_list_words
}

complete -F _zvr_al_gen_url_list zvr_al_gen_url_list
