#include "tools/completion.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "families/family.h"
#include "quorvane/decode.h"
#include "tools/help.h"

namespace quorvane::tool {
namespace {

using namespace std::string_literals;

/// What may stand for an option's or a position's value.
struct Values {
    std::string words;   // with blanks between them; empty: anything
    bool files = false;  // names of files too
};

struct Option {
    std::string name;  // without dashes; of a position the word in the help
    std::string purpose;
    bool takesValue;
    bool repeats;
    Values values;
};

struct Command {
    std::string name;
    std::string purpose;
    std::vector<Option> options;
    std::vector<Option> positions;
};

void Add(std::string& words, std::string_view word) {
    words += words.empty() ? "" : " ";
    words += word;
}

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands(
        [](const CLI::App* command) { return !command->get_name().empty(); });
}

Values ValuesOf(const CLI::App& app, const CLI::App& command, const CLI::Option& option) {
    Values values;
    const std::string type = option.get_type_name();  // with the choice, if there is one
    const std::string kind = option.nonpositional() ? type : option.get_name(true);
    if (const std::size_t open = type.find('{'); open != std::string::npos) {
        values.words = type.substr(open + 1, type.find('}') - open - 1);
        std::replace(values.words.begin(), values.words.end(), ',', ' ');
    } else if (kind == "FUNCTION") {
        if (command.get_name() == "decode") {
            values.words = "auto auto-downlink auto-uplink";
        }
        for (const DecodingInfo& info : Decodings()) {
            Add(values.words, info.name);
        }
    } else if (kind == "FAMILY") {
        for (const families::FamilyInfo& family : families::KnownFamilies()) {
            Add(values.words, family.name);
        }
    } else if (kind == "COMMAND") {
        for (const CLI::App* known : CommandsOf(app)) {
            Add(values.words, known->get_name());
        }
    }
    values.files = kind == "FILE" || type == "FILE";
    return values;
}

std::vector<Command> Describe(const CLI::App& app) {
    std::vector<Command> commands;
    for (const CLI::App* command : CommandsOf(app)) {
        Command& described = commands.emplace_back();
        described.name = command->get_name();
        described.purpose = Summary(command->get_description());
        std::vector<const CLI::Option*> options = command->get_options();
        for (const CLI::App* group : command->get_subcommands(
                 [](const CLI::App* part) { return part->get_name().empty(); })) {
            const std::vector<const CLI::Option*> more = group->get_options();
            options.insert(options.end(), more.begin(), more.end());
        }
        for (const CLI::Option* option : options) {
            const bool named = option->nonpositional();
            (named ? described.options : described.positions)
                .push_back({named ? option->get_lnames().front() : option->get_name(true),
                            std::string(Summary(option->get_description())),
                            option->get_items_expected_max() > 0, option->get_expected_max() > 1,
                            ValuesOf(app, *command, *option)});
        }
    }
    return commands;
}

/// `text` with a backslash ahead of each of the `marks`.
std::string Escaped(std::string_view text, std::string_view marks) {
    std::string escaped;
    for (const char character : text) {
        if (marks.find(character) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

/// Between single quotes, as bash and zsh read them.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' ? "'\\''"s : std::string(1, character);
    }
    return quoted + "'";
}

std::string BashCase(const std::string& pattern, const Values& values) {
    return "            " + pattern + ") words=\"" + values.words + '"' +
           (values.files ? " files=yes" : "") + " ;;\n";
}

std::string Bash(const std::vector<Command>& commands) {
    std::string names;
    std::string withValue;
    std::string optionValues;
    std::string options;
    std::string positions;
    for (const Command& command : commands) {
        Add(names, command.name);
        Values own;
        for (const Option& option : command.options) {
            Add(own.words, "--" + option.name);
            if (option.takesValue) {
                const std::string pattern = command.name + ":--" + option.name;
                withValue += (withValue.empty() ? "" : " | ") + pattern;
                optionValues += BashCase(pattern, option.values);
            }
        }
        options += BashCase(command.name + ":*:-?*", own);
        for (std::size_t index = 0; index < command.positions.size(); ++index) {
            const Option& position = command.positions[index];
            positions += BashCase(
                command.name + ":" + (position.repeats ? "*"s : std::to_string(index)) + ":*",
                position.values);
        }
    }
    return R"(# Completion of quorvane's command lines by bash.

_quorvane() {
    local current=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]}
    local index position=0 words= files=
    if ((COMP_CWORD == 1)); then
        words=")" +
           names + R"( --help --version"
    else
        for ((index = 2; index < COMP_CWORD; ++index)); do
            case $command:${COMP_WORDS[index]} in
                )" +
           withValue + R"()
                    ((++index))
                    ;;
                *:-?*) ;;
                *) ((++position)) ;;
            esac
        done
        case $command:${COMP_WORDS[COMP_CWORD - 1]} in
)" + optionValues +
           R"(            *)
                case $command:$position:$current in
)" + options +
           positions + R"(                esac
                ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    if [[ $files ]]; then
        local names
        mapfile -t names < <(compgen -f -- "$current")
        COMPREPLY+=("${names[@]}")
        compopt -o filenames 2>/dev/null
    fi
}
complete -F _quorvane quorvane
)";
}

/// What _arguments does for a value: ":NAME:ACTION".
std::string ZshAction(const std::string& name, const Values& values) {
    return ":" + name + ":" +
           (values.files           ? "_files"s
            : values.words.empty() ? " "s
                                   : "(" + values.words + ")");
}

std::string Zsh(const std::vector<Command>& commands) {
    std::string names;
    std::string cases;
    for (const Command& command : commands) {
        names += "        " + Quoted(command.name + ":" + Escaped(command.purpose, ":")) + "\n";
        cases += "        " + command.name + ")\n            _arguments";
        for (const Option& option : command.options) {
            // An option with a value may stand more than once.
            const std::string name = (option.takesValue ? "*--" : "--") + option.name;
            cases += " \\\n                " +
                     Quoted(name + "[" + Escaped(option.purpose, "[]:\\") + "]" +
                            (option.takesValue ? ZshAction(option.name, option.values) : ""));
        }
        for (const Option& position : command.positions) {
            cases += " \\\n                " + Quoted((position.repeats ? "*" : "") +
                                                      ZshAction(position.name, position.values));
        }
        cases += "\n            ;;\n";
    }
    return R"(#compdef quorvane
# Completion of quorvane's command lines by zsh.

_quorvane() {
    local -a commands=(
)" + names +
           R"(    )
    if ((CURRENT == 2)); then
        _describe command commands
        _arguments '--help[Print this help message and exit]' '--version[Show the version]'
        return
    fi
    shift words
    ((--CURRENT))
    case $words[1] in
)" + cases +
           R"(    esac
}

if [[ $zsh_eval_context[-1] == loadautofunc ]]; then
    _quorvane "$@"
else
    compdef _quorvane quorvane
fi
)";
}

/// Arguments of `complete` for the values, if any are known.
std::string FishValues(const Values& values) {
    return (values.files ? " -F"s : ""s) +
           (values.words.empty() ? ""s : " -a '" + values.words + "'");
}

std::string Fish(const std::vector<Command>& commands) {
    std::string script = R"(# Completion of quorvane's command lines by fish.

complete -c quorvane -f
complete -c quorvane -n __fish_use_subcommand -l help -d 'Print this help message and exit'
complete -c quorvane -n __fish_use_subcommand -l version -d 'Show the version'
)";
    const auto purpose = [](const std::string& text) {
        return " -d '" + Escaped(text, "'\\") + "'";
    };
    for (const Command& command : commands) {
        script += "complete -c quorvane -n __fish_use_subcommand -a " + command.name +
                  purpose(command.purpose) + "\n";
        const std::string own =
            "complete -c quorvane -n '__fish_seen_subcommand_from " + command.name + "'";
        for (const Option& option : command.options) {
            script += own + " -l " + option.name + (option.takesValue ? " -r" : "") +
                      FishValues(option.values) + purpose(option.purpose) + "\n";
        }
        for (const Option& position : command.positions) {
            if (const std::string values = FishValues(position.values); !values.empty()) {
                script += own + values + "\n";
            }
        }
    }
    return script;
}

}  // namespace

std::string CompletionScript(const CLI::App& app, const std::string& shell) {
    const std::vector<Command> commands = Describe(app);
    return shell == "bash" ? Bash(commands) : shell == "zsh" ? Zsh(commands) : Fish(commands);
}

}  // namespace quorvane::tool
