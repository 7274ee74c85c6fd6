// Scripts of buffer operations read from the input, run on the store the
// first byte picks and on the model of the buffer rules, exactly as the
// differential test runs its seeded ones: a disagreement traps.
#include <cstdint>
#include <cstdio>
#include <string>

#include "support/BufferScript.h"

namespace {

const int kMaxSteps = 400;
const size_t kStoreCount = sizeof tuskel_test::kStores / sizeof tuskel_test::kStores[0];

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    tuskel_test::ByteChoices choices(data + 1, size - 1);
    const std::string wrong = tuskel_test::runBufferScript(tuskel_test::kStores[data[0] % kStoreCount], choices, kMaxSteps);
    if (!wrong.empty()) {
        std::fprintf(stderr, "%s\n", wrong.c_str());
        __builtin_trap();
    }
    return 0;
}
