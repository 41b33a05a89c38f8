#include "foundation/log/VRXWrapperLog.h"

#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpSpecialFolder.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/registry/XpRegistry.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "foundation/time/XpDateTime.h"

namespace {

constexpr char16_t kKey[] = u"Software\\Kelo Corporation\\LBR\\VRXWrapper";
constexpr char16_t kSeparator[] = u"=========================================================\n";
constexpr int kOwnLevels = 3;

bool IsWanted() {
  const auto key = XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryRead);
  return key && key->GetBool(u"Debug");
}

XpString LogFolder() {
  XpString folder = XpGetSpecialFolder(XpFolderTemporary);
  for (const char16_t* name : {u"LBR", u"KRVOOutput", u"TKLX"}) folder = XpPathJoin(folder, name);
  return folder;
}

}  // namespace

VRXWrapperLog::~VRXWrapperLog() {
  if (m_file) m_file->Close();
}

void VRXWrapperLog::Open() {
  XpSingleLock lock(&m_lock);
  const XpString folder = LogFolder();
  if (!IsWanted() || !vrx::platform::IsPrivateFolder(folder, kOwnLevels)) return;
  m_path = XpPathJoin(folder, u"VRXWrapperLog.txt");
  XpFileDelete(m_path);  // there may be none
  XpSharedPtr<XpFile> file(new XpFile);
  if (file->OpenPath(m_path, XpOpenReadWrite | XpOpenText, XpShareRead) != XpOk) return;
  XpString line;
  XpFormat(line, u"- %s: Start at %s\n", u"VRXWrapper",
           XpDateTime::GetCurrentTime().FormatDateTime(XpDateShort, XpTimeSecond, true));
  file->WriteString((XpString(kSeparator) + line + kSeparator).c_str());
  m_file = file;
}
