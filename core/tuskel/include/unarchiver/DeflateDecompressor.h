#ifndef TUSKEL_UNARCHIVER_DEFLATEDECOMPRESSOR_H
#define TUSKEL_UNARCHIVER_DEFLATEDECOMPRESSOR_H

/// @file
/// DeflateDecompressor: zlib's inflate over library streams.

#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

/// A driver over zlib's inflate that decodes one deflate stream from an
/// input stream into an output stream.
///
/// It reads ahead in large blocks yet leaves the input on the first byte
/// after the compressed data, so the caller can read the trailer, data
/// descriptor or next header that follows. Neither stream is owned. Each
/// decompress() call has its own zlib state, so instances share nothing;
/// one call at a time per instance.
/// @ingroup archive
class TUSKEL_API DeflateDecompressor : public Decompressor {
public:
    /// Compressed bytes asked for per read; the input must be able to
    /// mark and reset across one such read.
    static constexpr int INPUT_BLOCK_SIZE = 33792;
    /// Plain bytes per write: every write is a whole block except the last.
    static constexpr int OUTPUT_BLOCK_SIZE = 51200;

    /// `nowrap`: a bare deflate stream (ZIP, GZIP) rather than a zlib-wrapped
    /// one. The processor, when given, may cut an entry short; not owned.
    DeflateDecompressor(bool nowrap, DecompressProcessor* processor);
    ~DeflateDecompressor() override;

    using Decompressor::decompress;  // the two-stream form stays unimplemented
    /// Decodes from the current position of `in` to the end of the deflate
    /// stream, writing to `out` in blocks of OUTPUT_BLOCK_SIZE.
    ///
    /// `compressedSize` is what the archive states; it only sizes the skip a
    /// processor can ask for, never the reads. When the processor's
    /// getAction() answers 2 (intended: the code that means "decompress" to
    /// an entry processor), the rest of the entry is skipped and the pending
    /// output dropped.
    /// @throws CompressionException "mark() not supported by input stream"
    ///   before anything is read; "inflate: need dictionary"; "inflate: error
    ///   N: " + zlib's text for corrupt or truncated data.
    /// @throws OutOfMemoryException "Out of memory" when zlib cannot allocate.
    ///   After a failure the input stands wherever the last read left it.
    /// @throws IOException what the streams throw.
    void decompress(InputStream& in, long compressedSize, OutputStream& out);

    /// ArchiveConstants::ALGORITHM_DEFLATE (1).
    int getAlgorithm() override;
    /// "inflate".
    const char* getAlgorithmName() override;
    /// zlib's version text, static.
    static const char* version();

private:
    bool _nowrap;
};

}  // namespace QRN_SPACE

#endif
