// A file with the bytes of a fuzz run, for what reads by path. It lies in a folder of the process' own and
// goes with it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "vrx/XpString.h"

class FuzzFile {
 public:
  explicit FuzzFile(const char* name) {
    std::string folder = (std::filesystem::temp_directory_path() / "vrx-fuzz-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) std::abort();
    m_folder = folder;
    m_path = m_folder / name;
  }
  FuzzFile(const FuzzFile&) = delete;
  FuzzFile& operator=(const FuzzFile&) = delete;
  ~FuzzFile() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  XpString Write(const std::uint8_t* data, std::size_t size) const {
    std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return XpNarrowString(m_path.string()).ToWide();
  }
  std::uintmax_t Size() const { return std::filesystem::file_size(m_path); }

 private:
  std::filesystem::path m_folder;
  std::filesystem::path m_path;
};
