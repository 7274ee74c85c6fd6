#include "ZipCorpus.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "Random.h"
#include "io/BufferBaseInputStream.h"
#include "io/ContinuousMemBufferBase.h"
#include "unarchiver/ZipConstants.h"
#include "unarchiver/ZipInfo.h"

namespace tuskel_bench {

namespace {

const size_t kLargestFile = 8192;
const size_t kFilesPerDirectory = 200;

void check(bool ok, const std::string& what) {
    if (!ok) {
        std::fprintf(stderr, "zip corpus: %s failed\n", what.c_str());
        std::exit(1);
    }
}

void writeFile(const std::string& path, const std::string& data) {
    std::ofstream out(path, std::ios::binary);
    out.write(data.data(), static_cast<std::streamsize>(data.size()));
    check(out.good(), "writing " + path);
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    check(in.good(), "reading " + path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void run(const std::string& command) { check(std::system(command.c_str()) == 0, command); }

// Where each entry's data begins in an archive, and its length, walked
// with the library's own local header reader.
void findData(const std::string& archive, std::vector<size_t>& offsets, std::vector<size_t>& sizes,
              std::vector<bool>& stored) {
    QRN_SPACE::ContinuousMemBufferBase buffer(static_cast<long>(archive.size()));
    buffer.append(archive.data(), static_cast<int>(archive.size()));
    QRN_SPACE::BufferBaseInputStream in(&buffer);
    size_t header = 0;
    for (;;) {
        in.mark(QRN_SPACE::ZipConstants::LOCHDR);
        QRN_SPACE::ZipInfo info;
        if (!info.read(in, false)) break;
        size_t data = header + QRN_SPACE::ZipConstants::LOCHDR + info.name.size() + static_cast<size_t>(info.extraLength);
        offsets.push_back(data);
        sizes.push_back(info.compressedSize);
        stored.push_back(info.method == QRN_SPACE::ZipConstants::STORED);
        in.skip(info.compressedSize);
        header = data + info.compressedSize;
    }
}

}  // namespace

ZipCorpus makeZipCorpus(const std::string& data, const std::string& dir, size_t fileCount) {
    ZipCorpus corpus;
    run("rm -rf '" + dir + "' && mkdir -p '" + dir + "/tree'");
    writeFile(dir + "/data.bin", data);
    run("cd '" + dir + "' && zip -q big.zip data.bin");

    // The files go to zip in this order (-@), which is then the archive's.
    Random r{0xD1B54A32D192ED03ull};  // seeded apart from the input's
    std::string list;
    static const char* const kinds[] = {"txt", "bin", "dat", "log"};
    for (size_t i = 0; i < fileCount; ++i) {
        size_t size = 1 + r.below(kLargestFile);
        std::string file = data.substr(r.below(data.size() - size), size);
        char name[64];
        std::snprintf(name, sizeof name, "d%03zu/f%05zu.%s", i / kFilesPerDirectory, i, kinds[r.below(4)]);
        if (i % kFilesPerDirectory == 0) run("mkdir -p '" + dir + "/tree/" + std::string(name, 4) + "'");
        writeFile(dir + "/tree/" + name, file);
        list += std::string(name) + "\n";
        corpus.total += size;
        corpus.files.push_back(std::move(file));
    }
    writeFile(dir + "/list", list);
    run("cd '" + dir + "/tree' && zip -q ../small.zip -@ < ../list && zip -q -0 ../stored.zip -@ < ../list");
    corpus.big = readFile(dir + "/big.zip");
    corpus.small = readFile(dir + "/small.zip");
    corpus.stored = readFile(dir + "/stored.zip");
    std::vector<size_t> storedSize;
    std::vector<bool> allStored;
    findData(corpus.stored, corpus.storedAt, storedSize, allStored);
    findData(corpus.small, corpus.smallAt, corpus.smallSize, corpus.smallStored);
    check(corpus.storedAt.size() == fileCount && corpus.smallAt.size() == fileCount, "walking the archives");
    return corpus;
}

ArenaEntries::ArenaEntries(const std::vector<std::string>& files) {
    size_t total = 0;
    for (const auto& f : files) {
        _offsets.push_back(total);
        total += f.size();
    }
    // Not zero: a zero fill may become calloc, which touches nothing.
    _arena.assign(total, '\xA5');
    for (size_t i = 0; i < files.size(); ++i) _outputs.emplace_back(&_arena[_offsets[i]], files[i].size());
}

CommonBuffer* ArenaEntries::getBuffer(EntryRecord*) {
    if (_next >= _outputs.size()) return nullptr;
    MemoryOutput& out = _outputs[_next++];
    out.rewind();
    return &out;
}

bool ArenaEntries::holds(const std::vector<std::string>& files) const {
    if (_next != files.size()) return false;
    for (size_t i = 0; i < files.size(); ++i) {
        if (_outputs[i].size() != static_cast<long>(files[i].size()) ||
            std::memcmp(&_arena[_offsets[i]], files[i].data(), files[i].size()) != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace tuskel_bench
