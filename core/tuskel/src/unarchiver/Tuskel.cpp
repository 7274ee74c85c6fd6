#include "unarchiver/Tuskel.h"

namespace QRN_SPACE {

namespace {

const char* const kSource = "../../core/tuskel/include/unarchiver/Tuskel";
const int kLineStart = 178;
const int kLineArchiver = 214;
const int kLineDecompress = 296;
const int kLineEncode = 330;
const int kLineDecode = 364;

[[noreturn]] void unimplementedArchiving(int line) {
    throwAt<ArchivingException>("Unimplemented", {kSource, line});
}

}  // namespace

ArchiveEntryHeader::~ArchiveEntryHeader() = default;

ArchiveEntryInfo::~ArchiveEntryInfo() { delete info; }

bool ArchiveEntryInfo::operator<(const ArchiveEntryInfo& other) const { return order < other.order; }

ArchiveEntryProcessor::~ArchiveEntryProcessor() { delete _skipped; }

void ArchiveEntryProcessor::beginUnarchiving() {}

OutputStream* ArchiveEntryProcessor::processEntry(ArchiveEntryInfo* info, int& action) {
    // Ownership came with the call; the unarchiver may still write into the
    // info after the data, so only the previous one is released now.
    delete _skipped;
    _skipped = info;
    action = ArchiveConstants::ACTION_SKIP;
    return nullptr;
}

void ArchiveEntryProcessor::endUnarchiving() {}

void ArchiveEntryProcessor::releaseSession() {}

ArchiveProcessor::~ArchiveProcessor() = default;

bool ArchiveProcessor::process(const ArchiveEntryInfo*) { return true; }

Unarchiver::~Unarchiver() = default;

void Unarchiver::start() { unimplementedArchiving(kLineStart); }

ArchiveEntry::~ArchiveEntry() = default;

Archiver::~Archiver() = default;

void Archiver::addEntry(ArchiveEntryInfo*, InputStream&) { unimplementedArchiving(kLineArchiver); }

void Archiver::addRawEntry(ArchiveEntryInfo*, InputStream&) { unimplementedArchiving(kLineArchiver); }

void Archiver::addRawEntry(ArchiveEntry*) { unimplementedArchiving(kLineArchiver); }

void Archiver::finish() { unimplementedArchiving(kLineArchiver); }

DecompressProcessor::~DecompressProcessor() = default;

Decompressor::~Decompressor() = default;

void Decompressor::decompress(InputStream&, OutputStream&) {
    throwAt<CompressionException>("Unimplemented", {kSource, kLineDecompress});
}

int Decompressor::getAlgorithm() { return 0; }

const char* Decompressor::getAlgorithmName() { return "none"; }

Encoder::~Encoder() = default;

void Encoder::encode(InputStream&, OutputStream&) {
    throwAt<EncodingException>("Unimplemented", {kSource, kLineEncode});
}

int Encoder::getAlgorithm() { return 0; }

const char* Encoder::getAlgorithmName() { return "none"; }

Encoder* Encoder::newByAlgorithm(int) { return nullptr; }

Decoder::~Decoder() = default;

void Decoder::decode(InputStream&, OutputStream&) {
    throwAt<EncodingException>("Unimplemented", {kSource, kLineDecode});
}

int Decoder::getAlgorithm() { return 0; }

const char* Decoder::getAlgorithmName() { return "none"; }

Decoder* Decoder::newByAlgorithm(int) { return nullptr; }

}  // namespace QRN_SPACE
