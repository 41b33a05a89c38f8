// A test with a folder of its own, and short ways to make and look at files without the code under test.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "foundation/platform/Paths.h"
#include "tests/support/TempFolder.h"
#include "vrx/XpString.h"

class FolderTest : public testing::Test {
 protected:
  std::filesystem::path Native(const std::string& name) const { return m_folder.Path() / name; }
  XpString Path(const std::string& name) const {
    return vrx::platform::PathFromNative(Native(name).native());
  }
  XpString Put(const std::string& name, const std::string& bytes = "") const {
    std::filesystem::create_directories(Native(name).parent_path());
    m_folder.Write(name, bytes);
    return Path(name);
  }
  std::string Get(const std::string& name) const { return m_folder.Read(name); }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(Native(name)));
  }

 private:
  TempFolder m_folder;
};

/// Makes failures of text comparisons readable.
inline std::ostream& operator<<(std::ostream& out, const XpString& text) {
  return out << '"' << text.ToNarrow().c_str() << '"';
}
