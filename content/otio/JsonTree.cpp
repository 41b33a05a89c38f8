#include "content/otio/JsonTree.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "content/otio/Timeline.h"

namespace vrx::otio {
namespace {

constexpr std::string_view kMetadata = "metadata";

/// Builds the tree. Every function answers whether to go on.
class TreeBuilder final : public nlohmann::json_sax<Json> {
 public:
  TreeBuilder(Json& tree, std::string& cause) : m_tree(tree), m_cause(cause) {}

  bool HasBrokenOff() const { return m_hasBrokenOff; }
  std::size_t GetErrorPosition() const { return m_errorPosition; }

  bool null() override { return Add(nullptr); }
  bool boolean(bool value) override { return Add(value); }
  bool number_integer(number_integer_t value) override { return Add(value); }
  bool number_unsigned(number_unsigned_t value) override { return Add(value); }
  bool number_float(number_float_t value, const string_t&) override { return Add(value); }
  bool string(string_t& value) override { return Add(std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool key(string_t& name) override {
    if (m_skippedDepth != 0) return true;
    if (name == kMetadata) m_isSkippingNext = true;
    m_key = std::move(name);
    return true;
  }
  bool start_object(std::size_t) override { return Open(Json::object()); }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(Json::array()); }
  bool end_array() override { return Close(); }
  bool parse_error(std::size_t position, const std::string&, const Json::exception&) override {
    m_hasBrokenOff = true;
    m_errorPosition = position;
    return false;
  }

 private:
  bool Open(Json container) {
    if (m_open.size() + m_skippedDepth >= kDeepest) {
      m_cause = "the document is nested more than " + std::to_string(kDeepest) + " deep";
      return false;
    }
    if (m_skippedDepth != 0 || m_isSkippingNext) {
      m_isSkippingNext = false;
      ++m_skippedDepth;
      return true;
    }
    Json* place = Place(std::move(container));
    if (place != nullptr) m_open.push_back(place);
    return place != nullptr;
  }

  bool Close() {
    if (m_skippedDepth != 0) {
      --m_skippedDepth;
    } else {
      m_open.pop_back();
    }
    return true;
  }

  bool Add(Json value) {
    if (m_skippedDepth != 0) return true;
    if (!std::exchange(m_isSkippingNext, false)) return Place(std::move(value)) != nullptr;
    return true;
  }

  /// Where the value lies in the tree; null when there are too many.
  Json* Place(Json value) {
    if (++m_values > kMostValues) {
      m_cause = "the document has more than " + std::to_string(kMostValues) + " values";
      return nullptr;
    }
    if (m_open.empty()) {
      m_tree = std::move(value);
      return &m_tree;
    }
    Json& parent = *m_open.back();
    if (parent.is_object()) return &(parent[m_key] = std::move(value));
    parent.push_back(std::move(value));
    return &parent.back();
  }

  Json& m_tree;
  std::string& m_cause;
  std::vector<Json*> m_open;  // only the last one grows, so the others stay where they are
  std::string m_key;
  std::size_t m_values = 0;
  std::size_t m_skippedDepth = 0;
  bool m_isSkippingNext = false;
  bool m_hasBrokenOff = false;
  std::size_t m_errorPosition = 0;
};

/// The length of the string at the front of `text`, with its quotation marks.
std::size_t StringLength(std::string_view text) {
  std::size_t at = 1;
  while (at < text.size() && text[at] != '"') at += text[at] == '\\' ? 2 : 1;
  return std::min(at + 1, text.size());
}

/// `text` with null in place of what is neither a number nor JSON, outside of strings.
std::string WithoutNonNumbers(std::string_view text) {
  constexpr std::string_view kWords[] = {"-Infinity", "Infinity", "NaN"};
  constexpr std::string_view kStarts = "\"-IN";
  std::string plain;
  plain.reserve(text.size());
  while (!text.empty()) {
    std::size_t kept = std::min(text.find_first_of(kStarts), text.size());
    if (kept == 0) {
      const auto* word =
          std::ranges::find_if(kWords, [text](std::string_view w) { return text.starts_with(w); });
      if (word != std::end(kWords)) {
        plain += "null";
        text.remove_prefix(word->size());
        continue;
      }
      kept = text.front() == '"' ? StringLength(text) : 1;
    }
    plain += text.substr(0, kept);
    text.remove_prefix(kept);
  }
  return plain;
}

/// "line 3, column 5" of the byte before `position`.
std::string PlaceOf(std::string_view text, std::size_t position) {
  const std::string_view before = text.substr(0, position == 0 ? 0 : position - 1);
  const auto line = std::ranges::count(before, '\n') + 1;
  const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

}  // namespace

XpResult ParseJson(std::span<const char> bytes, Json& tree, std::string& cause) {
  tree = nullptr;
  cause.clear();
  if (bytes.size() > kMostBytes) {
    cause = "the document is larger than " + std::to_string(kMostBytes >> 20) + " MiB";
    return XpErrInvalidFile;
  }
  const std::string text = WithoutNonNumbers({bytes.data(), bytes.size()});
  TreeBuilder builder(tree, cause);
  if (Json::sax_parse(text, &builder)) return XpOk;
  tree = nullptr;
  if (!builder.HasBrokenOff()) return XpErrInvalidFile;
  cause = PlaceOf(text, builder.GetErrorPosition()) + ": the text is no JSON from here on";
  return XpErrNotWellFormed;
}

}  // namespace vrx::otio
