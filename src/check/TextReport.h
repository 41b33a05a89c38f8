// Collects the problems of one text of a painter document. The checks of captions, speed sections and tennis
// shots use it.
#pragma once

#include <cstddef>
#include <vector>

#include "src/check/ProjectReport.h"

namespace vrx::check {

/// Names the first problems of one key and counts the rest.
class TextReport {
 public:
  /// `problems` must outlive the report, whose end adds the count.
  TextReport(const XpString& file, const XpString& key, std::vector<Problem>& problems)
      : m_file(file), m_key(key), m_problems(problems) {}
  TextReport(const TextReport&) = delete;
  TextReport& operator=(const TextReport&) = delete;
  ~TextReport();

  void Add(const XpString& message);
  /// `what` is "caption" or "record"; `number` counts from 1.
  void Add(const XpString& what, std::size_t number, const XpString& message);

 private:
  void Push(const XpString& message);

  XpString m_file;
  XpString m_key;
  std::vector<Problem>& m_problems;
  std::size_t m_count = 0;
};

}  // namespace vrx::check
