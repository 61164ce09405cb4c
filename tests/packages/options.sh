#!/usr/bin/env bash
# Every command and option of the program stands in its manual page and in the completions of each shell, and those have
# no others.
#   options.sh BUILD_FOLDER
set -euo pipefail
packaging=$(cd "$(dirname "$0")/../../packaging" && pwd)
vorn=$(cd "$1" && pwd)/vorn
fail() { echo "$*" >&2; exit 1; }
plain() { sed 's/\\-/-/g' "$1"; }

# The words in the first column of a help text.
words() { "$vorn" "$@" --help | sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n' | sort -u; }

commands=$("$vorn" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ -n "$commands" ] || fail "no commands in the help text"
for command in $commands; do
    page=$packaging/man/vorn-$command.1
    [ -f "$page" ] || fail "vorn $command has no manual page"
    grep -q "^.B $command\$" "$packaging/man/vorn.1" || fail "vorn.1 does not name $command"
    options=$(words "$command")
    [ "$(wc -w <<<"$options")" -ge 5 ] || fail "no options in the help text of $command"
    for option in $options; do
        long=${option#--} short=${option#-}
        grep -qE "^\.BI?R? (.*[ \"])?$option( |\"|\$)" <<<"$(plain "$page")" || fail "$page does not name $option"
        grep -qE "(^|[ \"])$option( |\"|\$)" "$packaging/completions/vorn.bash" || fail "vorn.bash does not know $option"
        grep -qE "['{,(*]$option[][{},' )]" "$packaging/completions/_vorn" || fail "_vorn does not know $option"
        grep -qE -- "-(l $long|s $short)( |\$)" "$packaging/completions/vorn.fish" || fail "vorn.fish does not know $option"
    done
    for option in $(plain "$page" | sed -n '/^.SH OPTIONS/,/^.SH EXIT/p' | grep -oE '^\.BI? +-[-a-zA-Z]+' | grep -oE -- '-.*'); do
        grep -qxe "$option" <<<"$options" || fail "$page names $option, which $command does not know"
    done
    for name in vorn.bash _vorn vorn.fish; do
        grep -qw "$command" "$packaging/completions/$name" || fail "$name does not know $command"
    done
done
bash -n "$packaging/completions/vorn.bash"
for shell in zsh fish; do
    file=$packaging/completions/$([ $shell = zsh ] && echo _vorn || echo vorn.fish)
    if command -v $shell >/dev/null; then $shell -n "$file"; fi
done

# bash completes as it should.
source "$packaging/completions/vorn.bash"
completed() { COMP_WORDS=(vorn "$@"); COMP_CWORD=$#; _vorn vorn "${!#}" "${COMP_WORDS[$#-1]}"; echo "${COMPREPLY[*]}"; }
[ "$(completed ad)" = adjust ] || fail "bash: $(completed ad)"
[ "$(completed adjust --solver s)" = "sparse simplex" ] || fail "bash: $(completed adjust --solver s)"
[ "$(completed check --cs)" = "" ] && [ "$(completed adjust --cs)" = --csv ] || fail "bash: options of another command"
echo "options are documented and completed"
