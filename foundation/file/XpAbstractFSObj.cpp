#include "foundation/file/XpAbstractFSObj.h"

#include "foundation/text/XpPath.h"

XpResult XpAbstractFSObj::SetPathText(const XpString& text) {
  m_path = text;
  return XpOk;
}

XpResult XpAbstractFSObj::GetPathText(XpString& path) const {
  path = m_path;
  return XpOk;
}

XpResult XpAbstractFSObj::GetName(XpString& name) const {
  XpString extension;
  XpPathSplit(m_path, nullptr, &name, &extension);
  name.Append(extension);
  return XpOk;
}

std::int64_t XpAbstractFSObj::GetSize() const {
  std::int64_t size = 0;
  return Stat(nullptr, nullptr, nullptr, &size) == XpOk ? size : -1;
}

XpResult XpAbstractFSObj::GetTimes(XpDateTime* creation, XpDateTime* write, XpDateTime* access) const {
  return Stat(creation, write, access, nullptr);
}

XpResult XpAbstractFSObj::GetCreationTime(XpDateTime& time) const {
  return GetTimes(&time, nullptr, nullptr);
}
XpResult XpAbstractFSObj::GetWriteTime(XpDateTime& time) const { return GetTimes(nullptr, &time, nullptr); }
XpResult XpAbstractFSObj::GetAccessTime(XpDateTime& time) const { return GetTimes(nullptr, nullptr, &time); }

XpResult XpAbstractFSObj::SetTimes(const XpDateTime*, const XpDateTime*, const XpDateTime*) {
  return XpErrNotSupported;
}
