# bash completion for tvrcim

# The methods of a class, or the arguments of one behind its name.
_tvrcim_method() {
    local class=$1 position=$2 method=$3 current=$4 words=()
    mapfile -t words < <("${COMP_WORDS[0]}" classes "$class" 2>/dev/null | sed -n 's/^  \([A-Za-z]*([^)]*)\).*/\1/p')
    if [[ $position -eq 2 ]]; then
        words=("${words[@]%%(*}")
    else
        mapfile -t words < <(printf '%s\n' "${words[@]}" | sed -n "s/^$method(\\(.*\\))\$/\\1/Ip" |
            tr ',' '\n' | sed -n '/^ *out /!s/.* \([A-Za-z]*\)\(\[\]\)*$/\1=/p')
        compopt -o nospace 2>/dev/null
    fi
    mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
}

_tvrcim() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local commands='list tree classes enum get set call assoc refs graph diag watch shell help'
    local options='--module --sim --namespace -o --output --device-log --log --instances --help --version'
    local word command='' words=() behind=0
    local i
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        if [[ -z $command ]]; then
            [[ " $commands " == *" $word "* ]] && command=$word
        elif [[ $word != -* && ${COMP_WORDS[i - 1]} != -* ]]; then
            behind=$((behind + 1))
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
    --log)
        mapfile -t COMPREPLY < <(compgen -W 'FATAL ERR WARN INFO DBG' -- "$current")
        return
        ;;
    -p | --property | --role | --result-role | --depth | --fold | --count | --set)
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
        diag) options+=' --set' ;;
        watch) options+=' --count' ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
        return
    fi
    case $command in
    '')
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
        [[ $previous == --sim ]] && mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$current")
        ;;
    help)
        mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
        ;;
    diag)
        case $behind in
        0) words=(list run) ;;
        1) mapfile -t words < <("${COMP_WORDS[0]}" list 2>/dev/null | awk 'NR > 1 { print $1 }') ;;
        2) mapfile -t words < <("${COMP_WORDS[0]}" diag list 2>/dev/null | awk 'NR > 1 { print $1 }') ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
        ;;
    enum | classes | get | set | call | assoc | refs | graph)
        # Behind the path of an instance; bash has broken that into words of its own.
        if [[ $command == call ]]; then
            local line=${COMP_LINE:0:COMP_POINT} typed=()
            read -ra typed <<<"${line#* call }"
            [[ $line == *' ' ]] && typed+=('')
            if [[ ${#typed[@]} -ge 2 ]]; then
                _tvrcim_method "${typed[0]%%.*}" "${#typed[@]}" "${typed[1]}" "$current"
                return
            fi
        fi
        # The first word behind the command is a class, or a path that begins with one.
        if [[ $behind -eq 0 && $current != *.* ]]; then
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
