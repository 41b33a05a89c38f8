// A folder of a test's own, with short ways to make and look at files without the code under test.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "foundation/platform/Paths.h"
#include "vrx/XpString.h"

class TempFolder : public testing::Test {
 protected:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vrx_test.XXXXXX").string();
    m_folder = mkdtemp(name.data());
  }
  ~TempFolder() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  std::filesystem::path Native(const std::string& name) const { return m_folder / name; }
  XpString Path(const std::string& name) const {
    return vrx::platform::PathFromNative(Native(name).native());
  }
  XpString Put(const std::string& name, const std::string& bytes = "") const {
    std::filesystem::create_directories(Native(name).parent_path());
    std::ofstream(Native(name), std::ios::binary) << bytes;
    return Path(name);
  }
  std::string Get(const std::string& name) const {
    std::ifstream file(Native(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::symlink_status(Native(name)));
  }

 private:
  std::filesystem::path m_folder;
};

/// Makes failures of text comparisons readable.
inline std::ostream& operator<<(std::ostream& out, const XpString& text) {
  return out << '"' << text.ToNarrow().c_str() << '"';
}
