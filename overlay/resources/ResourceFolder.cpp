#include "overlay/resources/ResourceFolder.h"

#include <algorithm>
#include <string>

#include "foundation/file/XpSpecialFolder.h"
#include "foundation/registry/SfRegistry.h"
#include "foundation/text/XpPath.h"

namespace vrx::overlay {
namespace {

constexpr char16_t kFolder[] = u"KRVOResources";
constexpr char16_t kDefaultProgram[] = u"LBRBrowser.exe";

struct Application {
  XpString location;
  XpString program;
};

Application ReadApplication() {
  const auto key = XpRegistryOpen(SfRegistryKeyPath(u"LBR", u"Browser", XpString()), XpRegistryLocalMachine,
                                  XpRegistryRead);
  if (!key) return {};
  return {key->GetString(u"InstalledLocation", XpString()), key->GetString(u"ExeName", XpString())};
}

}  // namespace

XpString FindResourceFolder() {
  Application application = ReadApplication();
  if (application.location.IsEmpty()) application.location = XpGetSpecialFolder(XpFolderExecutable);
  if (application.program.IsEmpty()) application.program = kDefaultProgram;
  // The program's name may hold folders of its own.
  const XpString program = ResourcePath(application.location, application.program);
  return XpPathAddTrailingSlash(XpPathJoin(XpPathDirectory(program), kFolder));
}

XpString ResourcePath(const XpString& folder, const XpString& name) {
  if (!XpPathIsNative(folder)) return XpPathJoin(folder, name);
  std::u16string native(name.AsView());
  std::replace(native.begin(), native.end(), u'\\', u'/');
  return XpPathJoin(folder, native);
}

}  // namespace vrx::overlay
