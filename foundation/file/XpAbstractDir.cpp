#include "foundation/file/XpAbstractDir.h"

void XpAbstractDir::FileTimeToDateTime(const FILETIME& fileTime, XpDateTime& date) const {
  date = XpDateTime::FromFileTime(fileTime);
}
