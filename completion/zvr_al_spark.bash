# bash completion for zvr_al_spark

# The tool's functions; installed, its file has no suffix.
_zvr_al_spark_folder=$(dirname "${BASH_SOURCE[0]}")
for _zvr_al_spark_file in "$_zvr_al_spark_folder"/zvr_al_gen_url_list{,.bash}; do
    [[ -f $_zvr_al_spark_file ]] && source "$_zvr_al_spark_file"
done
unset _zvr_al_spark_folder _zvr_al_spark_file

# No words: files are completed.
_zvr_al_spark_words() {
    case $1 in
    -s | --scenario | -r | --replay_profile | -q | --dump_query_url)
        _zvr_al_gen_url_list_words "$1"
        ;;
    --work-dir | --native | --master | --pieces | --partitions) ;;
    *)
        echo --scenario --replay_profile --dump_query_url --work-dir --master --native --pieces \
            --partitions --help
        ;;
    esac
}

_zvr_al_spark() {
    _zvr_al_gen_url_list_complete _zvr_al_spark_words
}

complete -o default -F _zvr_al_spark zvr_al_spark
