# bash completion for tvrcim

_tvrcim() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands='list tree classes enum get set call assoc refs graph shell'
    local options='--module --sim --namespace -o --output --log --instances --help --version'
    local word command='' words=()
    local i
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ -z $command && " $commands " == *" $word "* ]]; then
            command=$word
        fi
    done
    COMPREPLY=()
    case $previous in
    -o | --output)
        mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$current")
        return
        ;;
    --module | --instances)
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    --class | --result-class | --leaf | --hide)
        mapfile -t words < <("${COMP_WORDS[0]}" classes --all 2>/dev/null | awk 'NR > 1 { print $1 }')
        mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
        return
        ;;
    --namespace)
        mapfile -t COMPREPLY < <(compgen -W 'root/tavrin root/pg_interop' -- "$current")
        return
        ;;
    esac
    if [[ $current == -* ]]; then
        case $command in
        enum) options+=' -p --property --names' ;;
        get) options+=' -p --property' ;;
        classes) options+=' --all' ;;
        assoc) options+=' --class --result-class --role --result-role -p --property --names' ;;
        refs) options+=' --class --role -p --property --names' ;;
        graph) options+=' --depth --fold --leaf --hide' ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $command in
    '')
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
        [[ $previous == --sim ]] && mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
        ;;
    enum | classes | get | set | call | assoc | refs | graph)
        # Only the word right after the command, or after its options, is a class.
        if [[ $current != *.* ]]; then
            mapfile -t words < <("${COMP_WORDS[0]}" classes 2>/dev/null | awk 'NR > 1 { print $1 }')
            mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
            if [[ $command != enum && $command != classes ]]; then
                COMPREPLY=("${COMPREPLY[@]/%/.}")
                compopt -o nospace 2>/dev/null
            fi
        fi
        ;;
    esac
}

complete -F _tvrcim tvrcim
