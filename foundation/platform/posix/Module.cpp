#include "foundation/platform/Module.h"

#include <dlfcn.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/platform/Paths.h"

namespace vrx::platform {

namespace {

/// A module stays mapped after the last unload: the libraries that it uses leave thread-local data and exit
/// handlers that point into their code.
constexpr int kLoadFlags = RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE;

}  // namespace

ModuleHandle LoadModule(const XpString& path, std::string* cause) {
  constexpr std::string_view kForeignEnding = ".dll";
  std::string native = NativePath(path);
  if (native.ends_with(kForeignEnding))
    native.replace(native.size() - kForeignEnding.size(), native.npos, ".so");
  ModuleHandle module = native.empty() ? nullptr : dlopen(native.c_str(), kLoadFlags);
  if (module == nullptr && cause != nullptr) {
    const char* words = native.empty() ? nullptr : dlerror();
    *cause = words == nullptr ? "no such path" : words;
  }
  return module;
}

void UnloadModule(ModuleHandle module) {
  if (module != nullptr) dlclose(module);
}

void* FindSymbol(ModuleHandle module, const char* name) {
  return module == nullptr ? nullptr : dlsym(module, name);
}

XpString ExecutablePath() {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? XpString() : PathFromNative(path.native());
}

int LastError() { return errno; }

}  // namespace vrx::platform
