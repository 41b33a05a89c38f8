#include "overlay/tennis/TennisDocument.h"

#include "overlay/document/PainterKeys.h"
#include "overlay/tennis/TennisMetaData.h"

namespace vrx::overlay {
namespace {

constexpr double kDrawEndSeconds = 86400;
constexpr std::int64_t kWidth = 1920, kHeight = 1080;  // the overlay fits itself to the movie
constexpr std::size_t kTexts = 25;

struct EnglishText {
  std::size_t entry;
  const char16_t* text;
};
constexpr std::int32_t kKnots = 2;
constexpr double kKnotsPerKmh = 1 / 1.852;
constexpr EnglishText kEnglishTexts[] = {{0, u"mph"},   {2, u"km/h"},         {4, u"kn"},
                                         {14, u"Spin"}, {15, u"Swing speed"}, {16, u"Ball speed"}};

/// Adds to one dict until something fails.
class DictWriter {
 public:
  DictWriter(XpIniElement* dict, XpResult& result) : m_dict(dict), m_result(result) {}

  /// Keeps a value that is there and of the key's type.
  void Keep(const Key& key, const XpIniValue& value) {
    if (m_result == XpOk && Find(m_dict, key) == nullptr) Set(key, value);
  }
  void Set(const Key& key, const XpIniValue& value) {
    if (m_result != XpOk) return;
    if (m_dict->Get(key.name) != nullptr) m_dict->Remove(key.name);
    m_result = m_dict->Add(key.name, key.type, value);
  }
  /// The element under `key`, which is made when it is not there.
  XpIniElement* Open(const Key& key) {
    Keep(key, {});
    return m_result == XpOk ? m_dict->Get(key.name) : nullptr;
  }

 private:
  XpIniElement* m_dict;
  XpResult& m_result;
};

XpResult AddEnglishTexts(XpIniElement& strings) {
  std::vector<XpString> texts(kTexts);
  for (const EnglishText& english : kEnglishTexts) texts[english.entry] = english.text;
  for (const TennisStroke& stroke : TennisStrokes()) {
    texts[static_cast<std::size_t>(stroke.nameText)] = stroke.englishName;
  }
  XpResult result = XpOk;
  for (std::size_t i = 0; i < texts.size() && result == XpOk; ++i) {
    result = strings.InsertAt(XpIniElement::kAppend, XpIniType::String, texts[i]);
  }
  return result;
}

std::vector<TennisShot> InUnit(std::span<const TennisShot> shots, std::int32_t unit) {
  std::vector<TennisShot> converted(shots.begin(), shots.end());
  if (unit != kKnots) return converted;
  for (TennisShot& shot : converted) {
    shot.secondPanelSpeed *= kKnotsPerKmh;
    shot.thirdPanelSpeed *= kKnotsPerKmh;
  }
  return converted;
}

}  // namespace

XpResult PutTennisShots(std::span<const TennisShot> shots, const TennisDocumentSettings& settings,
                        XpIniDict& document) {
  XpResult result = XpOk;
  DictWriter info(DictWriter(&document, result).Open(kPainterInfo), result);
  DictWriter general(info.Open(kGeneralInfo), result);
  general.Keep(kVideoWidth, kWidth);
  general.Keep(kVideoHeight, kHeight);
  general.Keep(kSaveMovieMode, true);
  general.Set(kGpsUnitFromUser, std::int64_t{settings.unit});
  XpIniElement* strings = general.Open(kStringManager);
  if (result == XpOk && strings->GetCount() == 0) result = AddEnglishTexts(*strings);

  DictWriter span(info.Open(kTemplateInfo), result);
  span.Keep(kValid, false);
  span.Keep(kDrawStartTime, 0.0);
  span.Keep(kDrawEndTime, kDrawEndSeconds);

  info.Set(kTennisMetaInfo, {});
  DictWriter tennis(info.Open(kTennisMetaInfo), result);
  tennis.Set(kValid, true);
  tennis.Set(kTennisMetaData, XpNarrowString(WriteTennisMetaData(InUnit(shots, settings.unit))).ToWide());
  tennis.Set(kTennisMetaLayoutType, std::int64_t{settings.layoutType});
  tennis.Set(kOriginalDateTime, settings.start);
  tennis.Set(kDuration, settings.durationSeconds);
  tennis.Set(kTrimedShift, 0.0);
  return result;
}

}  // namespace vrx::overlay
