#include "overlay/document/SlowInfoRecord.h"

#include "overlay/document/RecordFields.h"

std::size_t vrx::overlay::ReadSlowInfoRecord(std::string_view& text, SlowInfoRecord& record) {
  RecordFields reader(text);
  std::size_t fields = 0;
  if (reader.Read(record.videoId)) {
    ++fields;
    for (float* field : {&record.speed, &record.startTime, &record.endTime, &record.sourceTime,
                         &record.sourceTimeWithTrim}) {
      if (!reader.ReadComma() || !reader.Read(*field)) break;
      ++fields;
    }
  }
  text = reader.GetRest();
  return fields;
}

void ParseSlowInfoData(const XpString& text, std::vector<SlowInfoRecord>& list) {
  // Only ASCII means something here; every other character ends a number.
  const XpNarrowString narrow = text.ToNarrow();
  std::string_view rest = narrow.AsView();
  SlowInfoRecord record;
  while (list.size() < vrx::overlay::kMaxSpeedSections) {
    const std::size_t bar = rest.find('|');
    if (bar == rest.npos) return;
    std::string_view fields = rest.substr(0, bar);
    vrx::overlay::ReadSlowInfoRecord(fields, record);
    list.push_back(record);
    rest.remove_prefix(bar + 1);
  }
}
