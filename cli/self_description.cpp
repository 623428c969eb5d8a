// The manual page and the completion of the shell, made from the commands themselves: they cannot
// say anything else than --help.
#include "cli/self_description.h"

#include <cctype>
#include <cstdio>
#include <string>

#include "cli/command.h"

namespace velnor::cli {
namespace {

/// A text for roff: nothing in it counts as a request.
std::string plain(std::string_view text)
{
    std::string made;
    bool lineBegins = true;
    for (const char c : text) {
        if (c == '\\')
            made += "\\e";
        else if (c == '-')
            made += "\\-";
        else {
            if (lineBegins && (c == '.' || c == '\''))
                made += "\\&";
            made += c;
        }
        lineBegins = c == '\n';
    }
    return made;
}

void putCommand(const Command& c)
{
    std::printf(".SS %s %s\n%s.\n", plain(c.name).c_str(), plain(c.arguments).c_str(),
                plain(c.summary).c_str());
    if (!c.details.empty())
        std::printf(".PP\n.nf\n%s\n.fi\n", plain(c.details).c_str());
    for (const OptionSpec& o : c.options)
        std::printf(".TP\n.B %s %s\n%s\n", plain(o.name).c_str(), plain(o.value).c_str(),
                    plain(o.help).c_str());
}

std::string optionWords(const Command& c)
{
    std::string words;
    for (const OptionSpec& o : c.options)
        words += std::string(o.name) + " ";
    return words + "--help";
}

/// "csv|json": words to choose from. Other values are names or files.
bool isChoice(std::string_view value)
{
    return value.find('|') != value.npos &&
           value.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") == value.npos;
}

}  // namespace

void printManPage()
{
    std::fputs(
        ".TH VELNOR\\-CLI 1 \"\" \"Velnor 3.0\" \"User Commands\"\n"
        ".SH NAME\nvelnor\\-cli \\- database and spreadsheet files from the shell\n"
        ".SH SYNOPSIS\n.B velnor\\-cli\n.I COMMAND\n[ARGUMENTS] [OPTIONS]\n"
        ".SH DESCRIPTION\n"
        "Reads and writes dBASE and FoxPro tables (DBF), Access databases (MDB), Paradox tables "
        "(DB),\n"
        "Excel workbooks (XLS), Lotus worksheets (WK4) and text files. A file is known by its "
        "extension.\n"
        "TABLE may be left out where a file has one table, or where its first table is meant.\n"
        ".SH COMMANDS\n",
        stdout);
    for (const Command* c : commands())
        putCommand(*c);
    std::fputs(".SH EXIT STATUS\n"
               ".TP\n.B 0\nDone.\n.TP\n.B 1\nFailed; the reason stands on standard error as\n"
               ".RI \"\\(dqError \\- \" NUMBER \" \\- \" DESCRIPTION \\(dq.\n"
               ".TP\n.B 2\nWrong use.\n.TP\n.B 3\nThe tables that were compared differ.\n",
               stdout);
}

void printCompletion()
{
    std::fputs("# Completion of velnor-cli for bash.\n_velnor_cli()\n{\n"
               "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
               "    local command=${COMP_WORDS[1]} words=\n"
               "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
               "        COMPREPLY=($(compgen -W \"",
               stdout);
    for (const Command* c : commands())
        std::printf("%s ", std::string(c->name).c_str());
    std::fputs("--help --version\" -- \"$word\"))\n        return\n    fi\n"
               "    case \"$command $before\" in\n",
               stdout);
    for (const Command* c : commands())
        for (const OptionSpec& o : c->options) {
            if (!isChoice(o.value))
                continue;
            std::string choices(o.value);
            for (char& letter : choices)
                letter = letter == '|' ? ' ' : letter;
            std::printf("    \"%s %s\") words=\"%s\" ;;\n", std::string(c->name).c_str(),
                        std::string(o.name).c_str(), choices.c_str());
        }
    std::fputs("    esac\n    if [ -z \"$words\" ] && [ \"${word#-}\" != \"$word\" ]; then\n"
               "        case $command in\n",
               stdout);
    for (const Command* c : commands())
        std::printf("        %s) words=\"%s\" ;;\n", std::string(c->name).c_str(),
                    optionWords(*c).c_str());
    std::fputs("        esac\n    fi\n"
               "    if [ -n \"$words\" ]; then\n        COMPREPLY=($(compgen -W \"$words\" -- "
               "\"$word\"))\n"
               "    else\n        COMPREPLY=($(compgen -f -- \"$word\"))\n    fi\n}\n"
               "complete -o filenames -F _velnor_cli velnor-cli\n",
               stdout);
}

}  // namespace velnor::cli
