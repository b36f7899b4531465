# bash completion for zvr_al_doctor

# The tool's functions; installed, its file has no suffix.
_zvr_al_doctor_folder=$(dirname "${BASH_SOURCE[0]}")
for _zvr_al_doctor_file in "$_zvr_al_doctor_folder"/zvr_al_gen_url_list{,.bash}; do
    [[ -f $_zvr_al_doctor_file ]] && source "$_zvr_al_doctor_file"
done
unset _zvr_al_doctor_folder _zvr_al_doctor_file

# Long options of a command.
_zvr_al_doctor_options() {
    case $1 in
    init) echo --log-format --unpack-to --unpack-limit --force --json ;;
    check) echo --json ;;
    rejected) echo --limit --width --tsv --json ;;
    patterns) echo --limit --url --method --host --json ;;
    *) return ;;
    esac
    echo --scenario --replay_profile --num_thread --dump_query_url --work-dir --help --version
}

# No words: files are completed.
_zvr_al_doctor_words() {
    case $1 in
    -s | --scenario | -r | --replay_profile | -q | --dump_query_url | -t | --num_thread)
        _zvr_al_gen_url_list_words "$1"
        ;;
    --method) echo GET POST PUT DELETE HEAD OPTIONS PATCH ;;
    --limit | --width | --url | --host | --log-format | --unpack-limit | --unpack-to | --work-dir) ;;
    zvr_al_doctor) echo init check rejected patterns --help --version ;;
    *) _zvr_al_doctor_options "${COMP_WORDS[1]}" ;;
    esac
}

_zvr_al_doctor() {
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_zvr_al_doctor_words zvr_al_doctor)" -- "${COMP_WORDS[1]}")
    else
        _zvr_al_gen_url_list_complete _zvr_al_doctor_words
    fi
}

complete -o default -F _zvr_al_doctor zvr_al_doctor
