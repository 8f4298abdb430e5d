# Completion of murlreport for bash.
_murlreport() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} kinds
    # bash takes --opt=value apart: --opt, =, value.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    case $before in
    --kind)
        local done=
        [[ $word == *,* ]] && done=${word%,*},
        kinds='stopped broken guarded frozen decoded lost gone byhand check form quiet unknown base dropped'
        mapfile -t COMPREPLY < <(compgen -P "$done" -W "$kinds" -- "${word##*,}")
        return
        ;;
    --command | --reason) return ;;
    --csv | --json | --html | --sarif | --accept-from)
        # Not a script: the report would replace it.
        mapfile -t COMPREPLY < <(compgen -f -X '*.[mM][rR][lLpP]' -- "$word")
        return
        ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--help --version --convert --open --html --csv --json --sarif --quiet --summary
            --all --kind --command --accept --reason --accept-from --prune --adopt --one-run --force' -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.[mM][rR][lLpP]' -- "$word")
    fi
}
complete -o filenames -F _murlreport murlreport
