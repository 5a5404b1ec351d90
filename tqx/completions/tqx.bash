# Completion of tqx for bash.

_tqx_words() {
    COMPREPLY=($(compgen -W "$1" -- "${COMP_WORDS[COMP_CWORD]}"))
}

_tqx_files() {
    compopt -o filenames 2>/dev/null
    local IFS=$'\n'
    COMPREPLY=($(compgen -f -- "${COMP_WORDS[COMP_CWORD]}"))
}

# The command's name among the words; empty before it.
_tqx_command() {
    local at
    for ((at = 1; at < COMP_CWORD; at++)); do
        case ${COMP_WORDS[at]} in
            --plugin) ((at++)) ;;
            -*) ;;
            *) echo "${COMP_WORDS[at]}"; return ;;
        esac
    done
}

_tqx_options() {
    case $1 in
        run) echo "-e --check --explain --leaks --max-pixels --no-orientation --help" ;;
        check) echo "--list --only --except --seed --in-process --json --junit --help" ;;
        fuzz) echo "--programs --seconds --seed --first --statements --whole --print --help" ;;
        members) echo "--json --help" ;;
        show | check-syntax | repl) echo "--help" ;;
        *) echo "--plugin --version --help" ;;
    esac
}

_tqx_check_ids() { "${COMP_WORDS[0]/#\~/$HOME}" check --list 2>/dev/null | sed 's/:.*//'; }

_tqx() {
    local command
    command=$(_tqx_command)
    case ${COMP_WORDS[COMP_CWORD - 1]} in
        --plugin | --junit) _tqx_files; return ;;
        --only | --except) _tqx_words "$(_tqx_check_ids)"; return ;;
        --seed | --programs | --seconds | --first | --statements | --max-pixels | -e) return ;;
    esac
    case $command,${COMP_WORDS[COMP_CWORD]} in
        *,-*) _tqx_words "$(_tqx_options "$command")" ;;
        ,*) _tqx_words "run repl check-syntax members show check fuzz" ;;
        run,* | show,* | check-syntax,*) _tqx_files ;;
    esac
}

complete -F _tqx tqx
