#ifndef TUSKEL_UNARCHIVER_DEFLATEDECOMPRESSOR_H
#define TUSKEL_UNARCHIVER_DEFLATEDECOMPRESSOR_H

// A driver over zlib's inflate that decodes one deflate stream from an input
// stream into an output stream. It reads ahead in large blocks yet leaves the
// input on the first byte after the compressed data, so the caller can read
// the trailer, data descriptor or next header that follows.

#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

class TUSKEL_API DeflateDecompressor : public Decompressor {
public:
    // Compressed bytes asked for per read; the input must be able to
    // mark and reset across one such read.
    static constexpr int INPUT_BLOCK_SIZE = 33792;
    // Plain bytes per write: every write is a whole block except the last.
    static constexpr int OUTPUT_BLOCK_SIZE = 51200;

    // nowrap: a bare deflate stream (ZIP, GZIP) rather than a zlib-wrapped
    // one. The processor, when given, may cut an entry short; not owned.
    DeflateDecompressor(bool nowrap, DecompressProcessor* processor);
    ~DeflateDecompressor() override;

    using Decompressor::decompress;  // the two-stream form stays unimplemented
    // Decodes from the current position of `in` to the end of the deflate
    // stream. compressedSize is what the archive states; it only sizes the
    // skip a processor can ask for, never the reads. Throws
    // CompressionException / OutOfMemoryException on failure, after which
    // the input stands wherever the last read left it.
    void decompress(InputStream& in, long compressedSize, OutputStream& out);

    int getAlgorithm() override;            // 1
    const char* getAlgorithmName() override;  // "inflate"
    static const char* version();           // zlib's version text

private:
    bool _nowrap;
};

}  // namespace QRN_SPACE

#endif
