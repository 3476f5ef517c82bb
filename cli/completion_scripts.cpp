// SPDX-License-Identifier: BSD-3-Clause
// The scripts by which shells ask for candidates.
#include "completion.h"

#include "commands.h"
#include "near_names.h"

#include "host/command_line.h"

#include <algorithm>
#include <cstdio>

namespace ipmib::cli
{
namespace
{

struct Shell {
    const char *name;
    const char *script;
};

constexpr Shell shells[] = {
    {"bash", R"(# bash completion for ipmibctl: the program says itself what may stand there.
_ipmibctl()
{
    local line=${COMP_LINE:0:COMP_POINT} words candidate replaced
    read -ra words <<<"$line"
    [[ $line == *[[:blank:]] ]] && words+=("")
    # Readline takes a colon or an equals sign for the end of a word, and replaces what lies behind it alone.
    replaced=${words[-1]}
    replaced=${replaced%"${replaced##*[:=]}"}
    COMPREPLY=()
    while IFS=$'\t' read -r candidate _; do
        [[ $candidate == *[:=] ]] && compopt -o nospace
        COMPREPLY+=("${candidate#"$replaced"}")
    done < <("${words[0]}" __complete "${words[@]:1}" 2>/dev/null)
}
complete -o bashdefault -o default -F _ipmibctl ipmibctl
)"},
    {"zsh", R"(#compdef ipmibctl
# zsh completion for ipmibctl: the program says itself what may stand there.
_ipmibctl()
{
    local -a candidates
    local word about
    while IFS=$'\t' read -r word about; do
        candidates+=("${word//:/\\:}${about:+:$about}")
    done < <("${words[1]}" __complete "${(@)words[2,CURRENT-1]}" "$PREFIX" 2>/dev/null)
    if (( $#candidates )); then
        _describe -t words 'ipmibctl' candidates
    else
        _files
    fi
}
if [ "${funcstack[1]}" = _ipmibctl ]; then
    _ipmibctl "$@"
else
    compdef _ipmibctl ipmibctl
fi
)"},
    {"fish", R"(# fish completion for ipmibctl: the program says itself what may stand there.
function __ipmibctl_candidates
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    $words[1] __complete $words[2..-1] "$current" 2>/dev/null
end
complete -c ipmibctl -f -a '(__ipmibctl_candidates)'
)"},
};

} // namespace

std::vector<std::string> shellNames()
{
    std::vector<std::string> names;
    for (const Shell &shell : shells) {
        names.emplace_back(shell.name);
    }
    return names;
}

int writeCompletionScript(const Options &, const Words &words)
{
    if (words.size() != 1) {
        throw host::UsageError("completion: name one shell, bash, zsh or fish");
    }
    std::fputs(completionScript(words.front()), stdout);
    return host::exitSuccess;
}

const char *completionScript(const std::string &shell)
{
    const auto found = std::ranges::find(shells, shell, &Shell::name);
    if (found == std::end(shells)) {
        const std::string meant = didYouMean(shell, shellNames());
        throw host::UsageError("completion: there is no shell \"" + shell + "\"" +
                               (meant.empty() ? ", but bash, zsh, fish" : meant));
    }
    return found->script;
}

} // namespace ipmib::cli
