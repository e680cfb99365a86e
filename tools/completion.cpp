/* tifftool completion: scripts by which shells complete commands and options. The options are those that the
 * help texts name.
 */
#include "options.h"
#include "standard_streams.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace tifftool {

namespace {

bool IsPartOfOption(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9') ||
           character == '-';
}

void AddOptions(std::string_view text, std::vector<std::string>& options)
{
    for (size_t at = text.find("--"); at != std::string_view::npos; at = text.find("--", at)) {
        size_t end = at;
        while (end < text.size() && IsPartOfOption(text[end])) {
            ++end;
        }
        const std::string option(text.substr(at, end - at));
        if (option.size() > 2 && std::ranges::find(options, option) == options.end()) {
            options.push_back(option);
        }
        at = end;
    }
}

// The commands' names, or a command's options, with something between them.
std::string Words(const Command* command, const char* between, const char* quote)
{
    std::vector<std::string> words;
    if (command) {
        AddOptions(command->arguments, words);
        AddOptions(command->details, words);
        words.push_back("--help");
    } else {
        for (const Command* each : Commands()) {
            words.push_back(each->name);
        }
    }
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "" : between) + (quote + word + quote);
    }
    return list;
}

void PrintForBash()
{
    printf("_tifftool()\n"
           "{\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} options\n"
           "    if ((COMP_CWORD == 1)); then\n"
           "        mapfile -t COMPREPLY < <(compgen -W '%s --help --version' -- \"$word\")\n"
           "        return\n"
           "    fi\n"
           "    case ${COMP_WORDS[1]} in\n",
           Words(nullptr, " ", "").c_str());
    for (const Command* command : Commands()) {
        printf("    %s) options='%s' ;;\n", command->name, Words(command, " ", "").c_str());
    }
    printf("    esac\n"
           "    if [[ $word == -* ]]; then\n"
           "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$word\")\n"
           "    else\n"
           "        mapfile -t COMPREPLY < <(compgen -f -- \"$word\")\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _tifftool tifftool tifftool.exe\n");
}

void PrintForPowerShell()
{
    printf("Register-ArgumentCompleter -Native -CommandName tifftool, tifftool.exe -ScriptBlock {\n"
           "    param($word, $line, $cursor)\n"
           "    $options = @{\n");
    for (const Command* command : Commands()) {
        printf("        '%s' = %s\n", command->name, Words(command, ", ", "'").c_str());
    }
    printf("    }\n"
           "    $words = @($line.CommandElements | ForEach-Object { $_.ToString() })\n"
           "    $first = $words.Count -lt 2 -or ($words.Count -eq 2 -and $word -ne '')\n"
           "    $choices = if ($first) { $options.Keys | Sort-Object } else { $options[$words[1]] }\n"
           "    $choices | Where-Object { $_ -like \"$word*\" -and ($first -or $word -like '-*') } | "
           "ForEach-Object {\n"
           "        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)\n"
           "    }\n"
           "}\n");
}

int RunCompletion(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {});
    if (!CheckOptions(completionCommand, options, 1, 1)) {
        return WRONG_USAGE;
    }
    const std::string shell = options.others[0];
    if (shell != "bash" && shell != "powershell") {
        return UsageError(completionCommand, "unknown shell \"" + shell + "\"; there are bash, powershell");
    }
    EndLinesPlainly();
    shell == "bash" ? PrintForBash() : PrintForPowerShell();
    return ALL_FINE;
}

} // namespace

const Command completionCommand = {
    .name = "completion",
    .arguments = "bash|powershell",
    .summary = "Prints a script by which a shell completes commands and options.",
    .details = "For bash, source it; for PowerShell, add it to the profile.\n",
    .example = "tifftool completion powershell >> $PROFILE",
    .run = RunCompletion,
};

} // namespace tifftool
