// Arbitrary bytes handed to the plug-in exactly as a host hands them: the
// whole road from identification to the host's entry buffers must end in a
// result code, never a crash, a leak or an escaping exception.
#include <cstdint>
#include <vector>

#include "MemoryHost.h"

namespace {

const size_t kEntryCap = 1 << 22;  // a bomb fills this much and no more

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static std::vector<char> entryMemory(kEntryCap);
    tuskel_bench::MemoryInput input(reinterpret_cast<const char*>(data), size);
    tuskel_bench::MemoryOutput output(entryMemory.data(), entryMemory.size());
    tuskel_bench::PreparedEntries entries(output);
    CommonDecompressor decompressor;
    int result = decompressor.decompress(&input, &entries);
    if (result < CommonDecompressor::RESULT_OK || result > CommonDecompressor::RESULT_UNSUPPORTED ||
        result == CommonDecompressor::RESULT_NULL_ARGUMENT) {
        __builtin_trap();
    }
    return 0;
}
