# Completion of vorn for bash.
_vorn()
{
    local word=$2 before=$3 command=${COMP_WORDS[1]} common="--solver --mode --help -C -h"
    if [ "$COMP_CWORD" -eq 1 ]; then
        COMPREPLY=($(compgen -W "adjust check import --help --version" -- "$word"))
        return
    fi
    case $before in
    --solver) COMPREPLY=($(compgen -W "sparse compact jordan simplex" -- "$word")); return ;;
    --mode) COMPREPLY=($(compgen -W "statistics solution propagation" -- "$word")); return ;;
    --csv | -C) COMPREPLY=($(compgen -d -- "$word")); return ;;
    --robust) COMPREPLY=($(compgen -W "huber danish l1" -- "$word")); return ;;
    --fail-on) COMPREPLY=($(compgen -W "test suspects unchecked test,suspects,unchecked" -- "$word")); return ;;
    --axes) COMPREPLY=($(compgen -W "yx xy" -- "$word")); return ;;
    --json | --html | --geojson | --dxf | --svg | --update | -o) COMPREPLY=($(compgen -f -- "$word")); return ;;
    esac
    [ "$command" != import ] || common="--from --force --quiet --help -o -h"
    case $word in
    -*)
        [ "$command" != adjust ] || common+=" --json --html --geojson --dxf --svg --update --axes --csv --brief --no-residual-statistics --snoop --robust --fail-on --threads --times --recompute --balance --ask --quiet -o"
        [ "$command" != check ] || common+=" --json"
        COMPREPLY=($(compgen -W "$common" -- "$word")) ;;
    *)
        local only='!*.inp'
        [ "$command" != import ] || only=
        COMPREPLY=($(compgen -f -X "$only" -- "$word") $(compgen -d -- "$word")) ;;
    esac
}
complete -o filenames -F _vorn vorn
