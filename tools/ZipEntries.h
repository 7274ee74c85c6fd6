#ifndef TUSKEL_TOOLS_ZIPENTRIES_H
#define TUSKEL_TOOLS_ZIPENTRIES_H

#include "Entry.h"
#include "unarchiver/ZipCentralDir.h"
#include "unarchiver/ZipInfo.h"

namespace tuskel_tool {

// An entry as its central directory record describes it.
Entry entryFromCentral(const QRN_SPACE::ZipCentralDir& record, int index);

// An entry as its local header describes it, completed by its central
// directory record (at the same offset) when there is one: the record alone
// knows the host system, the Unix mode and, for entries with a data
// descriptor, the sizes.
Entry entryFromLocal(const QRN_SPACE::ZipInfo& local, int index, const QRN_SPACE::ZipCentralDir* record);

// Flag bit 0 of a ZIP entry.
bool isEncrypted(int flags);
// Flag bit 3: sizes and CRC follow the data.
bool hasDescriptor(int flags);

}  // namespace tuskel_tool

#endif
