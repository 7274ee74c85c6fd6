#ifndef TUSKEL_BENCH_ZIPCORPUS_H
#define TUSKEL_BENCH_ZIPCORPUS_H

// The ZIP inputs of the inflate benchmark, made by Info-ZIP's zip from the
// benchmark's own bytes: one archive with a single large deflated entry,
// and a tree of 20,000 small files (1 B to 8 KiB, slices of those bytes at
// deterministic places) deflated and stored. zip writes to files, so no
// entry carries a data descriptor: every entry reaches the host.

#include <cstddef>
#include <string>
#include <vector>

#include "MemoryHost.h"

namespace tuskel_bench {

struct ZipCorpus {
    std::string big;                   // one deflated entry holding the whole input
    std::string small;                 // the tree, deflated
    std::string stored;                // the tree, stored (zip -0)
    std::vector<std::string> files;    // the tree's files, in archive order
    std::vector<size_t> storedAt;      // where each file's bytes sit in `stored`
    std::vector<size_t> smallAt;       // where each file's deflate data sits in `small`
    std::vector<size_t> smallSize;     // and its length
    std::vector<bool> smallStored;     // zip stores what deflate would not shrink
    size_t total = 0;                  // the files' bytes together
};

// Makes the archives in `dir` (kept there) from `data`.
ZipCorpus makeZipCorpus(const std::string& data, const std::string& dir, size_t fileCount);

// A host that writes entry i into memory prepared (and touched) for it
// beforehand, as a scanner that knows the sizes would.
class ArenaEntries : public CommonEntryProcessor {
public:
    explicit ArenaEntries(const std::vector<std::string>& files);

    CommonBuffer* getBuffer(EntryRecord* info);
    void finish() {}

    void restart() { _next = 0; }
    // Did the last run write exactly `files`, each into its own place?
    bool holds(const std::vector<std::string>& files) const;

private:
    std::string _arena;
    std::vector<size_t> _offsets;
    std::vector<MemoryOutput> _outputs;
    size_t _next = 0;
};

}  // namespace tuskel_bench

#endif
