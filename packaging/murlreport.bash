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
        kinds='stopped broken guarded frozen lost gone byhand check quiet unknown base dropped'
        mapfile -t COMPREPLY < <(compgen -P "$done" -W "$kinds" -- "${word##*,}")
        return
        ;;
    --command) return ;;
    --csv | --json | --html)
        # Not a script: the report would replace it.
        mapfile -t COMPREPLY < <(compgen -f -X '*.[mM][rR][lLpP]' -- "$word")
        return
        ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--help --version --csv --json --html --quiet --kind --command --summary
            --all --one-run --convert --force' -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.[mM][rR][lLpP]' -- "$word")
    fi
}
complete -o filenames -F _murlreport murlreport
