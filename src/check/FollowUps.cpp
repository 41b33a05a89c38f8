#include "src/check/FollowUps.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

namespace vrx::check {
namespace {

using View = std::u16string_view;

/// "Valid" of "CaptionInfo/Valid".
View NameOf(const XpString& key) {
  const View whole = key.AsView();
  const std::size_t slash = whole.rfind(u'/');
  return slash == whole.npos ? whole : whole.substr(slash + 1);
}

/// "CaptionInfo" of "CaptionInfo/Valid"; empty when the key does not say.
View PartOf(const XpString& key) {
  const View whole = key.AsView();
  const std::size_t slash = whole.rfind(u'/');
  return slash == whole.npos ? View() : whole.substr(0, slash);
}

bool IsRoot(const Problem& problem) { return !problem.meant.IsEmpty() || problem.dictLine != 0; }

/// The mistakes of a report, by what they can cause. Documents may have very many, so each question is
/// answered by looking it up.
class Roots {
 public:
  explicit Roots(std::vector<Problem>& problems) {
    for (Problem& problem : problems) {
      if (problem.meant.IsEmpty()) continue;
      if (problem.dictLine == 0) m_unread.try_emplace({problem.file, problem.line}, &problem);
      m_keys.try_emplace({problem.file, problem.meant.AsView()}, &problem);
      m_places.try_emplace(PlaceOf(problem, problem.meant.AsView(), PartOf(problem.key)), &problem);
      m_lines.try_emplace({problem.file, problem.meant.AsView(), problem.line}, &problem);
    }
    for (Problem& problem : problems) {
      if (problem.dictLine == 0 || FindUnreadDict(problem) != nullptr) continue;
      m_dicts.try_emplace({problem.file, problem.dictLine}, &problem);
    }
  }

  bool IsEmpty() const { return m_dicts.empty() && m_keys.empty(); }

  /// The mistake because of which the problem is there; null when there is none.
  Problem* Find(const Problem& problem) const {
    const View name = NameOf(problem.key);
    if (Problem* root = Get(m_dicts, {problem.file, problem.line})) return root;
    for (const View cause : {NameOf(problem.because), PartOf(problem.because)}) {
      if (Problem* root = Get(m_keys, {problem.file, cause})) return root;
    }
    if (Problem* root = Get(m_lines, {problem.file, name, problem.line})) return root;
    const View part = PartOf(problem.key);
    if (Problem* root = Get(m_places, PlaceOf(problem, name, part))) return root;
    if (!part.empty()) return Get(m_places, PlaceOf(problem, name, View()));
    // A key that does not say its part can be of any.
    const Place place = PlaceOf(problem, name, View());
    const auto any = m_places.lower_bound(place);
    const bool isSame = any != m_places.end() && std::get<0>(any->first) == std::get<0>(place) &&
                        std::get<1>(any->first) == name && std::get<2>(any->first) == problem.track &&
                        std::get<3>(any->first) == problem.clip;
    return isSame ? any->second : nullptr;
  }

  /// The mistake because of which nothing of the dict is read in which another one is; null when there is
  /// none.
  Problem* FindUnreadDict(const Problem& inside) const {
    return inside.dictLine == 0 ? nullptr : Get(m_unread, {inside.file, inside.dictLine});
  }

 private:
  using Place = std::tuple<XpString, View, XpString, std::uint32_t, View>;

  static Place PlaceOf(const Problem& problem, View name, View part) {
    return {problem.file, name, problem.track, problem.clip, part};
  }
  template <class Map>
  static Problem* Get(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
  }

  std::map<std::pair<XpString, std::uint64_t>, Problem*> m_dicts;
  std::map<std::pair<XpString, std::uint64_t>, Problem*> m_unread;
  std::map<std::pair<XpString, View>, Problem*> m_keys;
  std::map<std::tuple<XpString, View, std::uint64_t>, Problem*> m_lines;
  std::map<Place, Problem*> m_places;
};

}  // namespace

void DropFollowUps(std::vector<Problem>& problems) {
  const Roots roots(problems);
  if (roots.IsEmpty()) return;
  std::vector<bool> isDropped(problems.size());
  for (std::size_t i = 0; i < problems.size(); ++i) {
    Problem* root = IsRoot(problems[i]) ? roots.FindUnreadDict(problems[i]) : roots.Find(problems[i]);
    if (root == nullptr) continue;
    root->severity = std::max(root->severity, problems[i].severity);
    isDropped[i] = true;
  }
  std::size_t i = 0;
  std::erase_if(problems, [&](const Problem&) { return isDropped[i++]; });
}

}  // namespace vrx::check
