#include "foundation/platform/KnownFolders.h"

#include <dlfcn.h>
#include <link.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "foundation/platform/Paths.h"

namespace vrx::platform {
namespace {

constexpr std::string_view kHomeVariable = "$HOME";
constexpr std::size_t kLongestSetting = 8192;
constexpr int kMostSettings = 256;

/// An environment variable that names a folder; the XDG rules ignore relative ones.
std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::string Home() {
  std::string home = Variable("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return {};
  return found->pw_dir;
}

std::string VariableOrBelowHome(const char* name, const char* place) {
  std::string folder = Variable(name);
  if (folder.empty() && !Home().empty()) folder = Home() + place;
  return folder;
}

std::string Normal(const std::string& path) {
  std::string text = std::filesystem::path(path).lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

XpString AsPath(const std::string& folder) {
  return folder.empty() ? XpString() : PathFromNative(Normal(folder));
}

struct UserFolderNames {
  const char* key;
  const char* fallback;
};

UserFolderNames NamesOf(UserFolder folder) {
  switch (folder) {
    case UserFolder::Pictures:
      return {"XDG_PICTURES_DIR", "/Pictures"};
    case UserFolder::Videos:
      return {"XDG_VIDEOS_DIR", "/Videos"};
    case UserFolder::Music:
      return {"XDG_MUSIC_DIR", "/Music"};
    case UserFolder::Documents:
      return {"XDG_DOCUMENTS_DIR", "/Documents"};
    case UserFolder::Desktop:
      return {"XDG_DESKTOP_DIR", "/Desktop"};
    case UserFolder::Public:
      return {"XDG_PUBLICSHARE_DIR", "/Public"};
    default:
      return {"HOME", ""};
  }
}

/// The folder in a line like KEY="$HOME/Name"; empty when the line is another one.
std::string ReadSetting(std::string_view line, std::string_view key) {
  const std::size_t start = line.find_first_not_of(" \t");
  if (start == line.npos) return {};
  line.remove_prefix(start);
  if (!line.starts_with(key) || !line.substr(key.size()).starts_with("=\"")) return {};
  line.remove_prefix(key.size() + 2);
  const bool belowHome = line.starts_with(kHomeVariable);
  if (belowHome) line.remove_prefix(kHomeVariable.size());
  std::string value = belowHome ? Home() : "";
  for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) ++i;
    value += line[i];
  }
  return value.starts_with('/') ? value : "";
}

std::string SettingOfUser(std::string_view key) {
  std::ifstream file(VariableOrBelowHome("XDG_CONFIG_HOME", "/.config") + "/user-dirs.dirs");
  std::array<char, kLongestSetting> line;
  std::string last;
  for (int i = 0; i < kMostSettings && file.getline(line.data(), line.size()); ++i) {
    const std::string value = ReadSetting(line.data(), key);
    if (!value.empty()) last = value;
  }
  return last;
}

}  // namespace

XpString UserFolderPath(UserFolder folder) {
  const std::string home = Home();
  if (folder == UserFolder::Home) return AsPath(home);
  const UserFolderNames names = NamesOf(folder);
  const std::string set = SettingOfUser(names.key);
  if (!set.empty()) return AsPath(set);
  return home.empty() ? XpString() : AsPath(home + names.fallback);
}

XpString TemporaryFolder() {
  const std::string set = Variable("TMPDIR");
  return AsPath(set.empty() ? "/tmp" : set);
}

XpString ConfigurationFolder() { return AsPath(VariableOrBelowHome("XDG_CONFIG_HOME", "/.config")); }

std::string UserDataFolder() { return VariableOrBelowHome("XDG_DATA_HOME", "/.local/share"); }

XpString DataFolder() { return AsPath(UserDataFolder()); }

XpString SystemConfigurationFolder() { return AsPath("/etc"); }

XpString RegistryFolderOverride() { return AsPath(Variable("VRX_REGISTRY_DIR")); }

XpString SharedDataFolder() { return AsPath("/usr/share"); }

XpString ProgramEntriesFolder() { return AsPath("/usr/share/applications"); }

XpString ProgramsFolder() { return AsPath("/opt"); }

XpString SystemLibraryFolder() {
  // Systems name this folder differently; the C library is always in it.
  void* library = dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return XpString();
  link_map* map = nullptr;
  const bool known = dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 && map != nullptr;
  const std::string folder = known ? std::filesystem::path(map->l_name).parent_path().string() : "";
  dlclose(library);
  return AsPath(folder);
}

}  // namespace vrx::platform
