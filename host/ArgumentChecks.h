// Checks of arguments that several commands take. Each says in one line what is wrong, and what may have been
// meant.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace vrx::host {

/// Empty when the text is a whole number from 0 on.
std::string CheckCount(const std::string& text);

/// Empty when the text names anything: an empty one is a variable of a script that has no value.
std::string CheckName(const std::string& text);

/// For a number from `least` to `most`, as the message writes them.
CLI::Validator NumberWithin(double least, double most);

/// " did you mean NAME?" after a semicolon, or nothing when no name is near.
std::string Suggestion(std::string_view text, const std::vector<std::string>& names);

/// "text is none of a, b and c", with a suggestion.
std::string NoneOf(const std::string& text, const std::vector<std::string>& names);

/// For an option whose values have names.
template <class Value>
CLI::Validator NamedValues(std::map<std::string, Value> values) {
  return CLI::Validator(
      [values = std::move(values)](std::string& text) {
        std::vector<std::string> names;
        for (const auto& [name, value] : values) names.push_back(name);
        const auto found = values.find(text);
        if (found == values.end()) return NoneOf(text, names);
        text = std::to_string(static_cast<long long>(found->second));
        return std::string();
      },
      "");
}

}  // namespace vrx::host
