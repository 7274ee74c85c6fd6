#ifndef TUSKEL_TOOLS_ZIPWALK_H
#define TUSKEL_TOOLS_ZIPWALK_H

#include <climits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "CheckedStream.h"
#include "Entry.h"
#include "ZipDirectory.h"
#include "io/BufferBaseInputStream.h"
#include "unarchiver/Tuskel.h"

namespace tuskel_tool {

// What came of an entry's bytes against what its records say.
EntryResult judge(const Entry& expected, CheckedStream& out, bool cut);

// Reads one entry at the local header offset its directory record gives,
// with the library's header reader and inflater: for entries the walk of
// local headers did not reach, and for stored entries whose size only the
// directory knows.
// A decompress processor's answer that has the rest of an entry passed over.
constexpr int kCutAction = 2;
// `dp` (may be null) has cut the entry being inflated short.
inline bool isCut(QRN_SPACE::DecompressProcessor* dp) { return dp != nullptr && dp->getAction() == kCutAction; }

class DirectReader {
public:
    // `input` and `directory` are not owned.
    DirectReader(QRN_SPACE::BufferBase& input, const ZipDirectory& directory, QRN_SPACE::DecompressProcessor* dp)
        : _input(input), _directory(directory), _dp(dp) {}

    // The entry of directory record `record`, never read past where the
    // next entry begins.
    void read(size_t record, int index, EntrySink& sink);

private:
    long _atLocalHeader(const QRN_SPACE::ZipCentralDir& record, QRN_SPACE::InputStream& in);

    QRN_SPACE::BufferBase& _input;
    const ZipDirectory& _directory;
    QRN_SPACE::DecompressProcessor* _dp;  // may be null
    CheckedStream _out;
};

// A stream over a buffer that knows where it stands, past 2 GiB too, and
// reads nothing beyond a limit, once set.
class PositionStream : public QRN_SPACE::BufferBaseInputStream {
public:
    using QRN_SPACE::BufferBaseInputStream::BufferBaseInputStream;
    int read() override;
    int read(char* buf, int len) override;
    long skip(long n) override;
    void mark(int readLimit) override;
    void reset() override;
    long position() const { return _position; }
    void limit(long long end) { _limit = end; }

private:
    long _position = 0;
    long _mark = 0;
    long long _limit = LLONG_MAX;
};

// Thrown by the processor to end the walk of local headers: the walk can no
// longer tell where the next header is, and readRest() takes over.
struct WalkEnded {};

// The entry processor of a ZIP walk: turns each local entry into an Entry,
// completed by the directory record at the same offset, and hands it to the
// sink; it then checks the bytes against the records once the data (and a
// data descriptor) have been read. While the directory is sound, a local
// header it does not list (one inside another entry's data) is passed over.
class ZipWalkProcessor : public QRN_SPACE::ArchiveEntryProcessor {
public:
    // `in` is the stream the walk reads (not owned).
    ZipWalkProcessor(EntrySink& sink, const ZipDirectory& directory, DirectReader& direct,
                     QRN_SPACE::DecompressProcessor* dp, const PositionStream& in);

    QRN_SPACE::OutputStream* processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) override;
    void endUnarchiving() override;
    void releaseSession() override;

    // The walk ended with an exception: the entry it was in is bad.
    void fail(const std::string& problem);
    // Reads every directory record the walk did not reach.
    void readRest();

private:
    const QRN_SPACE::ZipCentralDir* _match(long headerPos);
    void _close(const EntryResult& result);

    EntrySink& _sink;
    const ZipDirectory& _directory;
    DirectReader& _direct;
    QRN_SPACE::DecompressProcessor* _dp;
    const PositionStream& _in;
    const bool _trusted;                                // the directory is sound
    std::map<long long, size_t> _byOffset;              // records by local header offset, first of each
    std::vector<bool> _reached;                         // per directory record
    std::unique_ptr<QRN_SPACE::ArchiveEntryInfo> _info; // the entry being read; ours
    const QRN_SPACE::ZipCentralDir* _record = nullptr;  // its directory record, if any ...
    size_t _recordIndex = 0;                            // ... and where the directory has it
    Entry _entry;
    bool _pending = false;  // _entry's stream is open
    int _entries = 0;       // entries met so far
    CheckedStream _out;
};

}  // namespace tuskel_tool

#endif
