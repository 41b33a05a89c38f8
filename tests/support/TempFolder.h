// A folder of its own for a test, removed with everything in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "vrx-test-XXXXXX").string();
    m_path = mkdtemp(name.data());
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }

  const std::filesystem::path& Path() const { return m_path; }
  std::string Write(const std::string& name, const std::string& bytes) const {
    const auto path = m_path / name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(m_path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// Number of entries, hidden ones included.
  std::ptrdiff_t Count() const {
    return std::distance(std::filesystem::directory_iterator(m_path), std::filesystem::directory_iterator());
  }

 private:
  std::filesystem::path m_path;
};
