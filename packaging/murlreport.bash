# Completion of murlreport for bash.
_murlreport() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    case $before in
    --kind)
        local done=
        [[ $word == *,* ]] && done=${word%,*},
        mapfile -t COMPREPLY < <(compgen -P "$done" -W 'stopped broken guarded frozen lost gone byhand check quiet
            unknown base dropped' -- "${word##*,}")
        return
        ;;
    --command) return ;;
    --csv | --json | --html)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
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
