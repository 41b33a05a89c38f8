// A content in memory.
#pragma once

#include <cstdint>
#include <vector>

#include "content/model/ISfContent.h"

/// Belongs to one thread at a time.
class SfContent : public ISfContent {
 public:
  void AddFile(const XpPath& path, vrx::formats::FormatCode format) override;
  void ReplaceFile(const XpPath& path, vrx::formats::FormatCode format) override;
  XpResult DeleteFileAt(std::int32_t index) override;
  void Clear() override;
  std::int32_t IndexOfFormat(vrx::formats::FormatCode format) const override;
  std::int32_t IndexOfPath(const XpPath& path) const override;
  void GetMainPath(XpPath& path) const override;
  vrx::formats::FormatCode GetMainFormat() const override;
  std::int32_t GetFileCount() const override;
  void GetFileAt(XpPath& path, std::int32_t index) const override;
  vrx::formats::FormatCode GetFormatAt(std::int32_t index) const override;
  bool IsReadOnly() const override;
  bool Exists(bool mainOnly) const override;
  void SetMark(std::int32_t mark) override;
  std::int32_t GetMark() const override;
  void CopyFrom(const ISfContent& other) override;
  void SetMainFormat(vrx::formats::FormatCode format) override;

 private:
  bool Holds(std::int32_t index) const;
  void RemoveAt(std::int32_t index);

  std::vector<XpPath> m_files;
  std::vector<vrx::formats::FormatCode> m_formats;  // one for each file
  std::int32_t m_mark = -1;
};
