#include "host/ArgumentChecks.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

#include "foundation/text/NearestName.h"
#include "vrx/XpTextCodec.h"

namespace vrx::host {
namespace {

std::optional<double> NumberOf(std::string_view text) {
  double number = 0.0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, number, std::chars_format::fixed);
  const bool isNumber = error == std::errc() && at == end && std::isfinite(number) && number >= 0.0;
  return isNumber ? std::optional(number) : std::nullopt;
}

/// What people write for seconds: "1:30", "0:01:30.5", "12,5", "90s", "1500ms".
std::optional<double> SecondsMeant(std::string text) {
  constexpr double kMinute = 60.0;
  constexpr double kMillisecond = 1e-3;
  std::ranges::replace(text, ',', '.');
  double unit = 1.0;
  if (text.ends_with("ms")) {
    unit = kMillisecond;
    text.resize(text.size() - 2);
  } else if (text.ends_with('s')) {
    text.pop_back();
  }
  double seconds = 0.0;
  for (std::string_view rest = text;;) {
    const std::size_t colon = rest.find(':');
    const auto part = NumberOf(rest.substr(0, colon));
    if (!part) return std::nullopt;
    seconds = seconds * kMinute + *part;
    if (colon == rest.npos) return seconds * unit;
    rest.remove_prefix(colon + 1);
  }
}

}  // namespace

std::string CheckSeconds(const std::string& text) {
  double seconds = 0.0;
  if (CLI::detail::lexical_cast(text, seconds) && std::isfinite(seconds) && seconds >= 0.0) return {};
  std::string cause = text + " is no number of seconds from 0 on";
  if (const auto meant = SecondsMeant(text)) {
    char number[32];
    std::snprintf(number, sizeof(number), "%.10g", *meant);
    cause += "; did you mean " + std::string(number) + "?";
  }
  return cause;
}

std::string CheckCount(const std::string& text) {
  const bool isCount =
      !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  return isCount ? "" : text + " is no whole number from 0 on";
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
