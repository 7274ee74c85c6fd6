#include "Progress.h"

#include <unistd.h>

#include <cstdio>

#include "InputFile.h"
#include "Names.h"

namespace tuskel_tool {

namespace {

using Clock = std::chrono::steady_clock;

const auto kDelay = std::chrono::seconds(1);           // quick work shows nothing
const auto kInterval = std::chrono::milliseconds(100);  // redraws at most this often
const int kWidth = 30;                                  // characters of the bar
const unsigned kClockEvery = 64;                        // ticks between looks at the clock

}  // namespace

bool Progress::_showing = false;

Progress::Progress(const InputFile& input, bool quiet)
    : _input(input), _enabled(!quiet && isatty(STDERR_FILENO)), _start(Clock::now()), _last(_start) {}

Progress::~Progress() { clearLine(); }

void Progress::tick(int entries) {
    if (!_enabled || ++_calls % kClockEvery != 0) return;
    const Clock::time_point now = Clock::now();
    if (now - _start < kDelay || now - _last < kInterval) return;
    _last = now;
    _draw(entries);
}

void Progress::_draw(int entries) {
    const long size = _input.getSize();
    const int percent = size > 0 ? static_cast<int>(100.0 * static_cast<double>(_input.reached()) / size) : 100;
    const int filled = percent * kWidth / 100;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.resize(kWidth, ' ');
    std::fprintf(stderr, "\r\033[K%3d%% [%s] %d entr%s  %s", percent, bar.c_str(), entries,
                 entries == 1 ? "y" : "ies", printable(_input.path()).c_str());
    std::fflush(stderr);
    _showing = true;
}

void Progress::clearLine() {
    if (!_showing) return;
    std::fputs("\r\033[K", stderr);
    _showing = false;
}

}  // namespace tuskel_tool
