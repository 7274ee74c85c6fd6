#ifndef TUSKEL_UNARCHIVER_ZIPEXEUNARCHIVER_H
#define TUSKEL_UNARCHIVER_ZIPEXEUNARCHIVER_H

/// @file
/// Self-extracting ZIP executables: an executable with a ZIP archive inside.
///
/// check_zipexe() finds where the archive begins; ZipExeUnarchiver runs an
/// ordinary ZipUnarchiver from there. Neither is reached through the format
/// registry, so **CommonDecompressor::decompress() answers 3 (not a known
/// format) for such files**: hosts call them themselves.
///
/// Three layouts are recognised:
/// - a plain DOS executable (relocation table not at 0x40) with the archive
///   right after the DOS image;
/// - a 16-bit NE executable whose last segment holds the marker block;
/// - a 32-bit PE executable with the marker block in its ".data" section,
///   or in a section named "_winzip" or "winzip". The section table is taken
///   at the 32-bit place (248 bytes after "PE"), so a 64-bit PE, whose
///   optional header is longer, is not recognised through its sections.
///
/// The marker block is 16 bytes: ZipConstants::SIG_ZIPEXE, 4 bytes, then the
/// archive's position as a little-endian 32-bit word.

#include <memory>

#include "unarchiver/Tuskel.h"
#include "unarchiver/ZipUnarchiver.h"

namespace QRN_SPACE {

/// Is `in` a self-extractor?
///
/// When it is, `pos` is where its archive begins, counted from the stream's
/// position; otherwise `pos` is left alone. The stream must support mark and
/// reset and is put back where it was, true or false. Reads are bounded by
/// what the stream delivers: no allocation is larger than the bytes that
/// arrived, whatever the headers claim. A short or hostile input answers
/// false; only the stream's own failures throw. Holds no state: any thread,
/// each on its own stream.
/// @ingroup archive
TUSKEL_API bool check_zipexe(InputStream& in, long& pos);

/// Unpacks the ZIP archive inside a self-extracting executable.
///
/// One walk on one thread at a time.
/// @ingroup archive
class TUSKEL_API ZipExeUnarchiver : public Unarchiver {
public:
    /// Reads `in`, which it does not own. The processors are not owned; the
    /// decompress processor may be null. All must outlive the unarchiver.
    /// @throws OutOfMemoryException "Out of memory" when the inner
    ///   unarchiver cannot be allocated.
    ZipExeUnarchiver(InputStream* in, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    /// Reads `buffer` (not owned, must outlive the unarchiver) through a
    /// stream of its own.
    /// @throws OutOfMemoryException "Out of memory" when that stream or the
    ///   inner unarchiver cannot be allocated.
    ZipExeUnarchiver(BufferBase* buffer, ArchiveEntryProcessor& processor, DecompressProcessor* dp);
    ~ZipExeUnarchiver() override;

    /// check_zipexe(), the position thrown away.
    static bool checkFormat(InputStream& in);

    /// Finds the archive and unpacks it as ZipUnarchiver::start() does, its
    /// local headers read from the archive's start within the executable.
    /// @throws ArchivingException "not zip exe format" for anything else;
    ///   otherwise what ZipUnarchiver::start() throws.
    void start() override;

private:
    // The processors are held by the inner unarchiver.
    InputStream* _in;                       // not owned, unless it is _ownedIn
    std::unique_ptr<InputStream> _ownedIn;  // the stream over a buffer
    std::unique_ptr<ZipUnarchiver> _zip;    // reads the archive
};

}  // namespace QRN_SPACE

#endif
