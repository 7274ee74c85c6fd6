#include "support/LogCapture.h"

#include <mutex>

#include "util/Log.h"

namespace tuskel_test {

namespace {

std::mutex gMutex;
std::vector<std::string> gPieces;

void record(const char* piece) {
    std::lock_guard<std::mutex> lock(gMutex);
    gPieces.emplace_back(piece);
}

}  // namespace

LogCapture::LogCapture(int level) {
    {
        std::lock_guard<std::mutex> lock(gMutex);
        gPieces.clear();
    }
    ops.level = level;
    ops.callback = record;
}

LogCapture::~LogCapture() {
    ops.callback = nullptr;
    ops.level = 0;
}

const std::vector<std::string>& LogCapture::pieces() const { return gPieces; }

std::string LogCapture::text() const {
    std::lock_guard<std::mutex> lock(gMutex);
    std::string out;
    for (const std::string& piece : gPieces) out += piece;
    return out;
}

}  // namespace tuskel_test
