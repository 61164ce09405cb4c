# Completion of vorn for bash.
_vorn()
{
    local word=$2 before=$3 command=${COMP_WORDS[1]} common="--solver --mode --help -C -h"
    local foreign="--from --sets --sigma --station --station-code --points --fix --datum --geoid"
    if [ "$COMP_CWORD" -eq 1 ]; then
        COMPREPLY=($(compgen -W "adjust check import export compare control transform plan --help --version" -- "$word"))
        return
    fi
    case $before in
    --solver) COMPREPLY=($(compgen -W "sparse compact jordan simplex" -- "$word")); return ;;
    --mode) COMPREPLY=($(compgen -W "statistics solution propagation" -- "$word")); return ;;
    --csv | -C) COMPREPLY=($(compgen -d -- "$word")); return ;;
    --robust) COMPREPLY=($(compgen -W "huber danish l1" -- "$word")); return ;;
    --fail-on) COMPREPLY=($(compgen -W "test suspects unchecked test,suspects,unchecked" -- "$word")); return ;;
    --from) COMPREPLY=($(compgen -W "gkf dynadjust dynaml sinex gvx lines gsi sdr m5 jobxml landxml csv json" -- "$word")); return ;;
    --to) COMPREPLY=($(compgen -W "gkf lines dynaml json sinex landxml points" -- "$word")); return ;;
    --sets) COMPREPLY=($(compgen -W "mean keep" -- "$word")); return ;;
    --components) COMPREPLY=($(compgen -W "propose use" -- "$word")); return ;;
    --parameters) COMPREPLY=($(compgen -W "3 4 6 7" -- "$word")); return ;;
    --axes) COMPREPLY=($(compgen -W "yx xy" -- "$word")); return ;;
    --json | --html | --geojson | --kml | --dxf | --svg | --update | --points | --list | --candidates | -o) COMPREPLY=($(compgen -f -- "$word")); return ;;
    esac
    [ "$command" != import ] || common="--force --quiet --help -o -h"
    [ "$command" != export ] || { common="--to --force --quiet --help -o -h"; foreign=; }
    case $command in
    compare) common="--level --apriori --held --points --dates --strain --html --json --quiet --help -o -C -h" foreign= ;;
    control) common="--level --apriori --html --json --quiet --help -o -C -h" foreign= ;;
    transform) common="--parameters --no-scale --list --level --apriori --json --quiet --help -o -C -h" foreign= ;;
    plan) common="--help-point --candidates --json --quiet --help -o -C -h" foreign= ;;
    esac
    case $word in
    -*)
        [ "$command" != adjust ] || common+=" --json --html --geojson --kml --dxf --svg --update --axes --csv --brief --no-residual-statistics --snoop --left-out --covariance --robust --fail-on --components --threads --memory --times --recompute --balance --ask --quiet -o"
        [ "$command" != check ] || common+=" --json"
        COMPREPLY=($(compgen -W "$common $foreign" -- "$word")) ;;
    *)
        local only='!*.inp'
        case $command in import | transform) only= ;; esac
        COMPREPLY=($(compgen -f -X "$only" -- "$word") $(compgen -d -- "$word")) ;;
    esac
}
complete -o filenames -F _vorn vorn
