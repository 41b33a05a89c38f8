#include "host/CompletionScripts.h"

#include <string_view>

namespace vrx::host {
namespace {

/// In single quotes, in which the shells take everything as it is but the quote itself.
std::string Quoted(std::string_view text, std::string_view quote) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') {
      quoted += quote;
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

std::string ForBourne(std::string_view text) { return Quoted(text, "'\\''"); }
std::string ForFish(std::string_view text) { return Quoted(text, "\\'"); }

/// The places of all commands below the program, as the alternatives of a `case`.
std::string Alternatives(std::span<const CommandNode> nodes, std::string_view separator) {
  std::string text;
  for (const CommandNode& node : nodes.subspan(1)) {
    if (!text.empty()) text += separator;
    text += "'" + node.place + "'";
  }
  return text;
}

std::string Names(const std::vector<CommandName>& commands) {
  std::string names;
  for (const CommandName& command : commands) names += (names.empty() ? "" : " ") + command.name;
  return names;
}

std::string OptionNames(const CommandNode& node) {
  std::string names;
  for (const CommandOption& option : node.options) {
    for (const std::string& name : {option.shortName, option.longName}) {
      if (!name.empty()) names += (names.empty() ? "" : " ") + name;
    }
  }
  return names;
}

/// `name:summary`, as zsh describes what it offers.
std::string Described(const std::string& name, const std::string& summary) {
  return ForBourne(name + ":" + summary);
}

}  // namespace

std::string BashCompletion(std::span<const CommandNode> nodes) {
  std::string text =
      "# Completion of vrx for bash.\n"
      "_vrx() {\n"
      "  local current=${COMP_WORDS[COMP_CWORD]} place=vrx commands= options= i\n"
      "  for ((i = 1; i < COMP_CWORD; ++i)); do\n"
      "    case \"$place ${COMP_WORDS[i]}\" in\n"
      "      " +
      Alternatives(nodes, " | ") +
      ") place+=\" ${COMP_WORDS[i]}\" ;;\n"
      "    esac\n"
      "  done\n"
      "  case $place in\n";
  for (const CommandNode& node : nodes) {
    text += "    '" + node.place + "') commands='" + Names(node.commands) + "' options='" +
            OptionNames(node) + "' ;;\n";
  }
  return text +
         "  esac\n"
         "  if [[ $current == -* ]]; then\n"
         "    COMPREPLY=($(compgen -W \"$options\" -- \"$current\"))\n"
         "  elif [[ -n $commands ]]; then\n"
         "    COMPREPLY=($(compgen -W \"$commands\" -- \"$current\"))\n"
         "  else\n"
         "    compopt -o default 2>/dev/null\n"
         "    COMPREPLY=()\n"
         "  fi\n"
         "}\n"
         "complete -F _vrx vrx\n";
}

std::string ZshCompletion(std::span<const CommandNode> nodes) {
  std::string text =
      "#compdef vrx\n"
      "_vrx() {\n"
      "  local place=vrx word\n"
      "  local -a commands options\n"
      "  for word in ${words[2,CURRENT-1]}; do\n"
      "    case \"$place $word\" in\n"
      "      (" +
      Alternatives(nodes, "|") +
      ") place+=\" $word\" ;;\n"
      "    esac\n"
      "  done\n"
      "  case $place in\n";
  for (const CommandNode& node : nodes) {
    text += "    ('" + node.place + "')\n      commands=(";
    for (const CommandName& command : node.commands) {
      text += "\n        " + Described(command.name, command.summary);
    }
    text += ")\n      options=(";
    for (const CommandOption& option : node.options) {
      const std::string& name = option.longName.empty() ? option.shortName : option.longName;
      text += "\n        " + Described(name, option.summary);
    }
    text += ") ;;\n";
  }
  return text +
         "  esac\n"
         "  if [[ $PREFIX == -* ]]; then\n"
         "    _describe -o option options\n"
         "  elif (( $#commands )); then\n"
         "    _describe command commands\n"
         "  else\n"
         "    _files\n"
         "  fi\n"
         "}\n"
         // Found by its name in a folder of functions, it is called at once; read by a shell, it is
         // announced.
         "if [[ $funcstack[1] == _vrx ]]; then _vrx; else compdef _vrx vrx; fi\n";
}

std::string FishCompletion(std::span<const CommandNode> nodes) {
  std::string text =
      "# Completion of vrx for fish.\n"
      "function __vrx_place\n"
      "  set -l place vrx\n"
      "  for word in (commandline -opc)[2..-1]\n"
      "    switch \"$place $word\"\n"
      "      case " +
      Alternatives(nodes, " ") +
      "\n"
      "        set place \"$place $word\"\n"
      "    end\n"
      "  end\n"
      "  echo $place\n"
      "end\n";
  for (const CommandNode& node : nodes) {
    const std::string begin = "complete -c vrx -n \"test (__vrx_place) = '" + node.place + "'\"";
    for (const CommandName& command : node.commands) {
      text += begin + " -f -a " + command.name + " -d " + ForFish(command.summary) + "\n";
    }
    for (const CommandOption& option : node.options) {
      text += begin;
      if (!option.shortName.empty()) text += " -s " + option.shortName.substr(1);
      if (!option.longName.empty()) text += " -l " + option.longName.substr(2);
      text += (option.takesValue ? " -r -d " : " -d ") + ForFish(option.summary) + "\n";
    }
  }
  return text;
}

}  // namespace vrx::host
