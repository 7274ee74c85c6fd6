#include "unarchiver/ZipEntryInfo.h"

namespace QRN_SPACE {

ZipEntryInfo::ZipEntryInfo(ZipInfo* zipInfo) { info = zipInfo; }

ZipEntryInfo::~ZipEntryInfo() = default;

ZipInfo& ZipEntryInfo::zipInfo() { return *static_cast<ZipInfo*>(info); }

const ZipInfo& ZipEntryInfo::zipInfo() const { return *static_cast<const ZipInfo*>(info); }

ZipArchiveProcessor::~ZipArchiveProcessor() = default;

bool ZipArchiveProcessor::process(const ArchiveEntryInfo* info) {
    const ZipInfo* header = info == nullptr ? nullptr : dynamic_cast<const ZipInfo*>(info->info);
    return header != nullptr && !header->hasDataDescriptor();
}

}  // namespace QRN_SPACE
