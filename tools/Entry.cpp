#include "Entry.h"

namespace tuskel_tool {

const char* Entry::methodName() const {
    switch (method) {
        case 0: return "stored";
        case 1: return "shrunk";
        case 6: return "imploded";
        case 8: return "deflate";
        case 9: return "deflate64";
        case 12: return "bzip2";
        case 14: return "lzma";
        case 93: return "zstd";
        case 95: return "xz";
        case 98: return "ppmd";
        case 99: return "aes";
        default: return "unknown";
    }
}

}  // namespace tuskel_tool
