# bash completion for zvr_al_report

# The tool's functions; installed, its file has no suffix.
_zvr_al_report_folder=$(dirname "${BASH_SOURCE[0]}")
for _zvr_al_report_file in "$_zvr_al_report_folder"/zvr_al_gen_url_list{,.bash}; do
    [[ -f $_zvr_al_report_file ]] && source "$_zvr_al_report_file"
done
unset _zvr_al_report_folder _zvr_al_report_file

# Long options of a command.
_zvr_al_report_options() {
    case $1 in
    load) echo --json ;;
    page) echo --output --queries --no-queries ;;
    export) echo --format --output --base-url --only-transaction ;;
    *) return ;;
    esac
    echo --scenario --replay_profile --num_thread --dump_query_url --work-dir --help --version
}

# No words: files are completed.
_zvr_al_report_words() {
    case $1 in
    -s | --scenario | -r | --replay_profile | -q | --dump_query_url | -t | --num_thread)
        _zvr_al_gen_url_list_words "$1"
        ;;
    -f | --format) echo csv json vegeta siege k6 jmeter ;;
    -o | --output | --work-dir | --queries | --base-url | --only-transaction) ;;
    zvr_al_report) echo load page export --help --version ;;
    *) _zvr_al_report_options "${COMP_WORDS[1]}" ;;
    esac
}

_zvr_al_report() {
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$(_zvr_al_report_words zvr_al_report)" -- "${COMP_WORDS[1]}")
    else
        _zvr_al_gen_url_list_complete _zvr_al_report_words
    fi
}

complete -o default -F _zvr_al_report zvr_al_report
