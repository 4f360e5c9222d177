#include "tools/command_pages.h"

#include "tools/text.h"

#include <CLI/CLI.hpp>

#include <sstream>

namespace tool {
namespace {

const char* const kExitCodes =
    "0 done; 1 output could not be written; 2 wrong usage; 3 input that cannot be read, even if it is one frame "
    "of "
    "many; 129, 130, 143 stopped by SIGHUP, Ctrl-C, SIGTERM.";

std::vector<const CLI::App*> commandsOf(const CLI::App& program) {
  return program.get_subcommands([](const CLI::App*) { return true; });
}

// A group of options is a subcommand without a name.
std::vector<const CLI::Option*> optionsOf(const CLI::App& command) {
  std::vector<const CLI::Option*> options = command.get_options([](const CLI::Option*) { return true; });
  for (const CLI::App* const group : commandsOf(command)) {
    const std::vector<const CLI::Option*> members = group->get_options([](const CLI::Option*) { return true; });
    if (group->get_name().empty()) options.insert(options.end(), members.begin(), members.end());
  }
  return options;
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

// Text that troff prints as it stands.
std::string troffText(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool startsLine = escaped.empty() || escaped.back() == '\n';
    if (startsLine && (c == '.' || c == '\'')) escaped += "\\&";
    escaped += c == '\\' ? "\\e" : (c == '-' ? "\\-" : std::string(1, c));
  }
  return escaped;
}

std::string troffOption(const CLI::Option& option) {
  const std::string name = option.get_positional() ? option.get_name(true) : option.get_name(false, true);
  const std::string usual = option.get_default_str();
  return ".TP\n.B " + troffText(name) + (takesValue(option) && !option.get_positional() ? " \\fIVALUE\\fR" : "") +
         "\n" + troffText(option.get_description() + (usual.empty() ? "" : "; usually " + usual)) + "\n";
}

std::string troffCommand(const CLI::App& command) {
  std::string text = ".SS " + troffText(command.get_name()) + "\n" + troffText(command.get_description()) + ".\n";
  for (const CLI::Option* const option : optionsOf(command)) {
    text += troffOption(*option);
  }
  return text + ".PP\n.nf\n" + troffText(command.get_footer()) + "\n.fi\n";
}

// The long names, "--job --params".
std::string longNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* const option : optionsOf(command)) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return join(names, " ");
}

// Lines of a `case` over command and option: what may follow the option.
std::string choiceCases(const CLI::App& command) {
  std::string cases;
  for (const CLI::Option* const option : optionsOf(command)) {
    for (const std::string& name : option->get_lnames()) {
      const std::vector<std::string> choices = choicesOf(*option);
      if (!choices.empty()) {
        cases += "    '" + command.get_name() + " --" + name + "') words='" + join(choices, " ") + "' ;;\n";
      }
    }
  }
  return cases;
}

}  // namespace

std::vector<std::string> choicesOf(const CLI::Option& option) {
  const std::string description = option.get_description();
  const std::size_t colon = description.rfind(": ");
  if (!takesValue(option) || colon == std::string::npos) {
    return {};
  }
  std::vector<std::string> words;
  std::istringstream list(description.substr(colon + 1));
  for (std::string word; std::getline(list, word, ',');) {
    const bool isWord = word.size() > 1 && word[0] == ' ' && word.find_first_of(" '\"$\\", 1) == std::string::npos;
    if (!isWord) {
      return {};
    }
    words.push_back(word.substr(1));
  }
  return words.size() > 1 ? words : std::vector<std::string>();
}

std::string manualPage(const CLI::App& program) {
  std::string page = ".TH ZELWELD 1 \"\" \"zelweld " ZELWELD_VERSION
                     "\" \"User Commands\"\n.SH NAME\nzelweld \\- " +
                     troffText(program.get_description()) +
                     "\n.SH SYNOPSIS\n.B zelweld\n\\fISUBCOMMAND\\fR [\\fIOPTIONS\\fR]\n.SH SUBCOMMANDS\n";
  for (const CLI::App* const command : commandsOf(program)) {
    page += troffCommand(*command);
  }
  return page + ".SH EXIT STATUS\n" + troffText(kExitCodes) + "\n";
}

std::string bashCompletion(const CLI::App& program) {
  std::vector<std::string> names;
  std::string choices;
  std::string options;
  for (const CLI::App* const command : commandsOf(program)) {
    names.push_back(command->get_name());
    choices += choiceCases(*command);
    options += "      " + command->get_name() + ") words='" + longNames(*command) + "' ;;\n";
  }
  return "# Completion of zelweld in bash, made from the options of the program.\n"
         "_zelweld() {\n"
         "  local typed=${COMP_WORDS[COMP_CWORD]} words=\n"
         "  case \"${COMP_WORDS[1]} ${COMP_WORDS[COMP_CWORD-1]}\" in\n" +
         choices +
         "  esac\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    words='" +
         join(names, " ") + " " + longNames(program) +
         "'\n"
         "  elif [ -z \"$words\" ] && [ \"${typed#-}\" != \"$typed\" ]; then\n"
         "    case \"${COMP_WORDS[1]}\" in\n" +
         options +
         "    esac\n"
         "  fi\n"
         "  if [ -n \"$words\" ]; then\n"
         "    COMPREPLY=($(compgen -W \"$words\" -- \"$typed\"))\n"
         "  else\n"
         "    local IFS=$'\\n'\n"
         "    COMPREPLY=($(compgen -f -- \"$typed\"))\n"
         "  fi\n"
         "}\n"
         "complete -o filenames -F _zelweld zelweld\n";
}

}  // namespace tool
