#include "gps/log/KVUGPSLogReader.h"

#include "gps/log/GpsLogLine.h"
#include "gps/log/GpsTime.h"

namespace {

using namespace vrx::gps;

/// The stretch that is read, in UTC.
class UtcRange {
 public:
  UtcRange(const XpDateTime& firstUtc, const XpDateTime& lastUtc)
      : m_firstUtc(firstUtc), m_lastUtc(lastUtc) {}
  void Move(std::int64_t seconds) {
    m_firstUtc = Moved(m_firstUtc, seconds);
    m_lastUtc = Moved(m_lastUtc, seconds);
  }
  bool Contains(const XpDateTime& timeUtc) const {
    if (!m_firstUtc.IsValid() || !m_lastUtc.IsValid()) return false;
    const std::int64_t seconds = WholeSeconds(timeUtc);
    return seconds >= WholeSeconds(m_firstUtc) && seconds <= WholeSeconds(m_lastUtc);
  }

 private:
  XpDateTime m_firstUtc;
  XpDateTime m_lastUtc;
};

/// Where a position is counted that does not get into the list; null for one that does.
std::uint64_t* FindReason(const PositionFields& fields, const KVUGPSLogReader& reader,
                          const XpDateTime& timeUtc, const UtcRange& range, KVUGPSLogCounts& counts) {
  if (reader.lastFixTime.empty()) return &counts.noClock;
  if (fields.date.empty()) return &counts.noDate;
  // A point without a date would stand at the beginning of the calendar.
  if (!timeUtc.IsValid()) return &counts.wrongTime;
  return range.Contains(timeUtc) ? nullptr : &counts.outsideRange;
}

void AddPosition(std::string_view body, KVUGPSLogReader& reader, const UtcRange& range,
                 KVUGPSInfoList& list) {
  KVUGPSLogCounts& counts = reader.counts;
  const PositionFields fields = ReadPosition(body);
  const bool isVoid = fields.status == 0;
  const XpDateTime timeUtc = ReadFixTime(fields.date, reader.lastFixTime);
  ++counts.positions;
  if (isVoid) ++counts.voids;
  if (std::uint64_t* reason = FindReason(fields, reader, timeUtc, range, counts)) {
    if (!isVoid) ++*reason;
    return;
  }
  ++counts.kept;
  if (isVoid) ++counts.keptVoid;
  KVUGPSInfo& point = list.emplace_back();
  point.time = timeUtc.GetValue();
  point.longitude = fields.longitude;
  point.latitude = fields.latitude;
  if (fields.hasSpeed) point.speed = fields.speed;
  point.milliseconds = fields.millisecondsOfDay;
  point.status = fields.status;
}

std::int64_t ReadShift(std::string_view body, KVUGPSLogReader& reader) {
  const OptionTimes times = ReadOptionTimes(body);
  reader.optionTimeA = times.before;
  reader.optionTimeB = times.after;
  std::int64_t seconds = 0;
  times.after.DifferenceInSeconds(times.before, seconds);
  return seconds;
}

}  // namespace

void ParseGPSLog(std::string_view log, KVUGPSLogReader& reader, const XpDateTime& firstLocal,
                 const XpDateTime& lastLocal, KVUGPSInfoList& list, std::int32_t timeZoneMinutes,
                 std::int64_t& timeShiftSeconds, bool& logHasHeaderMark) {
  list.clear();
  reader.timeZoneMinutes = timeZoneMinutes;
  UtcRange range(UtcFromLocal(firstLocal, timeZoneMinutes), UtcFromLocal(lastLocal, timeZoneMinutes));
  for (std::size_t end = log.find('\n'); end != log.npos; end = log.find('\n')) {
    const std::string_view text = log.substr(0, end);
    log.remove_prefix(end + 1);
    if (text.size() > kMostLineBytes) {
      ++reader.counts.tooLong;
      continue;
    }
    const LogLine line = ClassifyLine(text);
    switch (line.kind) {
      case LineKind::Header:
        logHasHeaderMark = HasHeaderMark(text);
        break;
      case LineKind::Option:
        timeShiftSeconds = ReadShift(line.body, reader);
        range.Move(timeShiftSeconds);
        break;
      case LineKind::FixTime:
        ++reader.counts.fixTimes;
        reader.lastFixTime = FirstField(line.body);
        break;
      case LineKind::Position:
        AddPosition(line.body, reader, range, list);
        break;
      case LineKind::Other:
        ++reader.counts.others;
        break;
    }
  }
}
