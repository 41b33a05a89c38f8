#include "host/ArgumentChecks.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "foundation/text/NearestName.h"
#include "vrx/XpTextCodec.h"

namespace vrx::host {
std::string CheckCount(const std::string& text) {
  const bool isCount =
      !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  return isCount ? "" : text + " is no whole number from 0 on";
}

std::string CheckName(const std::string& text) { return text.empty() ? "an empty name is no file" : ""; }

CLI::Validator NumberWithin(double least, double most) {
  return CLI::Validator(
      [least, most](std::string& text) {
        double number = 0.0;
        const bool isNumber = CLI::detail::lexical_cast(text, number);
        if (isNumber && number >= least && number <= most) return std::string();
        std::array<char, 64> limits{};
        std::snprintf(limits.data(), limits.size(), "%g to %g", least, most);
        return text + " is no number from " + limits.data();
      },
      "");
}

std::string Suggestion(std::string_view text, const std::vector<std::string>& names) {
  std::vector<std::u16string> wide;
  for (const std::string& name : names) wide.push_back(textcodec::ToUtf16(name));
  const std::vector<std::u16string_view> views(wide.begin(), wide.end());
  const auto nearest = NearestName(textcodec::ToUtf16(text), views);
  return nearest ? "; did you mean " + textcodec::ToUtf8(*nearest) + "?" : "";
}

std::string NoneOf(const std::string& text, const std::vector<std::string>& names) {
  std::string all;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) all += i + 1 == names.size() ? " and " : ", ";
    all += names[i];
  }
  return text + " is none of " + all + Suggestion(text, names);
}

}  // namespace vrx::host
