# Completion of vorn for bash.
_vorn()
{
    local word=$2 before=$3 command=${COMP_WORDS[1]} common="--solver --mode --help -C -h"
    if [ "$COMP_CWORD" -eq 1 ]; then
        COMPREPLY=($(compgen -W "adjust check import compare control transform plan --help --version" -- "$word"))
        return
    fi
    case $before in
    --solver) COMPREPLY=($(compgen -W "sparse compact jordan simplex" -- "$word")); return ;;
    --mode) COMPREPLY=($(compgen -W "statistics solution propagation" -- "$word")); return ;;
    --csv | -C) COMPREPLY=($(compgen -d -- "$word")); return ;;
    --components) COMPREPLY=($(compgen -W "propose use" -- "$word")); return ;;
    --parameters) COMPREPLY=($(compgen -W "3 4 6 7" -- "$word")); return ;;
    --axes) COMPREPLY=($(compgen -W "yx xy" -- "$word")); return ;;
    --json | --html | --geojson | --dxf | --svg | --list | --candidates | -o) COMPREPLY=($(compgen -f -- "$word")); return ;;
    esac
    [ "$command" != import ] || common="--from --force --quiet --help -o -h"
    case $command in
    compare) common="--level --apriori --held --points --dates --json --quiet --help -o -C -h" ;;
    control) common="--level --apriori --json --quiet --help -o -C -h" ;;
    transform) common="--parameters --no-scale --list --level --apriori --json --quiet --help -o -C -h" ;;
    plan) common="--help-point --candidates --json --quiet --help -o -C -h" ;;
    esac
    case $word in
    -*)
        [ "$command" != adjust ] || common+=" --json --html --geojson --dxf --svg --axes --csv --brief --no-residual-statistics --components --threads --times --recompute --balance --ask --quiet -o"
        [ "$command" != check ] || common+=" --json"
        COMPREPLY=($(compgen -W "$common" -- "$word")) ;;
    *)
        local only='!*.inp'
        case $command in import | transform) only= ;; esac
        COMPREPLY=($(compgen -f -X "$only" -- "$word") $(compgen -d -- "$word")) ;;
    esac
}
complete -o filenames -F _vorn vorn
