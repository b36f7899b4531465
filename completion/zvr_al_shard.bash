# bash completion for zvr_al_shard

# The tool's functions; installed, its file has no suffix.
_zvr_al_shard_folder=$(dirname "${BASH_SOURCE[0]}")
for _zvr_al_shard_file in "$_zvr_al_shard_folder"/zvr_al_gen_url_list{,.bash}; do
    [[ -f $_zvr_al_shard_file ]] && source "$_zvr_al_shard_file"
done
unset _zvr_al_shard_folder _zvr_al_shard_file

# Long options of a command.
_zvr_al_shard_options() {
    case $1 in
    plan) echo --scenario --replay_profile --dump_query_url --work-dir --pieces --output ;;
    check | load) echo --plan ;;
    settle) echo --plan --bare --instance ;;
    cut) echo --plan --bare --keys ;;
    collapse) echo --plan --bare --settled ;;
    merge) echo --plan --bare ;;
    *) return ;;
    esac
    echo --help --version
}

# No words: files are completed.
_zvr_al_shard_words() {
    case $1 in
    -s | --scenario | -r | --replay_profile | -q | --dump_query_url)
        _zvr_al_gen_url_list_words "$1"
        ;;
    -o | --output | --work-dir | --pieces | --plan | --instance | --keys | --settled) ;;
    zvr_al_shard) echo plan check load settle cut collapse merge --help --version ;;
    *) _zvr_al_shard_options "${COMP_WORDS[1]}" ;;
    esac
}

_zvr_al_shard() {
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_zvr_al_shard_words zvr_al_shard)" -- "${COMP_WORDS[1]}")
    else
        _zvr_al_gen_url_list_complete _zvr_al_shard_words
    fi
}

complete -o default -F _zvr_al_shard zvr_al_shard
