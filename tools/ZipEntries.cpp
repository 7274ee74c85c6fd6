#include "ZipEntries.h"

#include <sys/stat.h>

#include "Names.h"
#include "utils/IOUtils.h"

namespace tuskel_tool {

namespace {

using QRN_SPACE::IOUtils;

const int kHostUnix = 3;
const unsigned int kFatDirectory = 0x10;  // MS-DOS attribute bit
const int kTimestampTag = 0x5455;         // extended timestamp extra field
const int kTimestampHasMtime = 0x01;
const int kFlagEncrypted = 0x0001;
const int kFlagDescriptor = 0x0008;
const int kFlagUtf8 = 0x0800;

// The modification time of an extended timestamp field, when present.
bool extendedMtime(const std::string& extra, time_t& mtime) {
    for (size_t at = 0; at + 4 <= extra.size();) {
        const char* field = extra.data() + at;
        const size_t length = static_cast<size_t>(IOUtils::readUShort(field + 2));
        if (at + 4 + length > extra.size()) return false;
        if (IOUtils::readUShort(field) == kTimestampTag && length >= 5 &&
            (IOUtils::readUChar(field + 4) & kTimestampHasMtime)) {
            mtime = static_cast<time_t>(static_cast<int32_t>(IOUtils::readUInt(field + 5)));
            return true;
        }
        at += 4 + length;
    }
    return false;
}

// MS-DOS date and time (date in the high 16 bits), as local time.
time_t dosTime(unsigned int stamp) {
    struct tm t = {};
    t.tm_year = static_cast<int>((stamp >> 25) & 0x7F) + 80;
    t.tm_mon = static_cast<int>((stamp >> 21) & 0x0F) - 1;
    t.tm_mday = static_cast<int>((stamp >> 16) & 0x1F);
    t.tm_hour = static_cast<int>((stamp >> 11) & 0x1F);
    t.tm_min = static_cast<int>((stamp >> 5) & 0x3F);
    t.tm_sec = static_cast<int>((stamp & 0x1F) * 2);
    t.tm_isdst = -1;
    return mktime(&t);
}

time_t mtimeOf(unsigned int stamp, const std::string& extra) {
    time_t mtime;
    return extendedMtime(extra, mtime) ? mtime : dosTime(stamp);
}

void classify(Entry& entry, int host, unsigned int external) {
    if (host == kHostUnix) entry.mode = external >> 16;
    const bool endsInSlash = !entry.rawName.empty() && entry.rawName.back() == '/';
    entry.directory = endsInSlash || (entry.mode != 0 && S_ISDIR(entry.mode)) ||
                      (host == kHostFat && (external & kFatDirectory));
    entry.symlink = !entry.directory && entry.mode != 0 && S_ISLNK(entry.mode);
}

}  // namespace

bool isEncrypted(int flags) { return flags & kFlagEncrypted; }
bool hasDescriptor(int flags) { return flags & kFlagDescriptor; }

Entry entryFromCentral(const QRN_SPACE::ZipCentralDir& record, int index) {
    Entry entry;
    entry.rawName = record.name;
    entry.name = decodeZipName(record.name, {(record.flags & kFlagUtf8) != 0, record.versionMadeBy >> 8, record.extra});
    entry.index = index;
    entry.method = record.method;
    entry.size = record.uncompressedSize;
    entry.compressedSize = record.compressedSize;
    entry.crc = record.crc;
    entry.crcKnown = true;
    entry.mtime = mtimeOf(record.time, record.extra);
    classify(entry, record.versionMadeBy >> 8, record.externalAttributes);
    return entry;
}

Entry entryFromLocal(const QRN_SPACE::ZipInfo& local, int index, const QRN_SPACE::ZipCentralDir* record) {
    const std::string extra(local.extra.get() ? local.extra.get() : "", static_cast<size_t>(local.extraLength));
    Entry entry;
    if (record != nullptr) {
        entry = entryFromCentral(*record, index);
    } else {
        entry.name = decodeZipName(local.name, {(local.flags & kFlagUtf8) != 0, -1, extra});
        entry.mtime = mtimeOf(local.time, extra);
        classify(entry, -1, 0);
    }
    entry.rawName = local.name;
    entry.index = index;
    entry.method = local.method;
    if (!hasDescriptor(local.flags)) {
        entry.size = local.uncompressedSize;
        entry.compressedSize = local.compressedSize;
        entry.crc = local.crc;
        entry.crcKnown = true;
    } else if (record == nullptr) {
        entry.size = -1;  // known only once the descriptor is read
        entry.compressedSize = -1;
        entry.crcKnown = false;
    }
    return entry;
}

}  // namespace tuskel_tool
