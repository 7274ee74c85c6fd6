#include "Progress.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "InputFile.h"
#include "Names.h"

namespace tuskel_tool {

namespace {

using Clock = std::chrono::steady_clock;

const auto kDelay = std::chrono::seconds(1);           // quick work shows nothing...
const char* const kDelayVariable = "TUSKEL_PROGRESS_DELAY";  // ...unless this says otherwise
const auto kInterval = std::chrono::milliseconds(100);  // redraws at most this often
const int kWidth = 30;                                  // characters of the bar
const unsigned kClockEvery = 64;                        // ticks between looks at the clock

}  // namespace

bool Progress::_showing = false;

// Seconds before a bar appears, from the environment if it says so.
Clock::duration delay() {
    const char* text = std::getenv(kDelayVariable);
    char* end = nullptr;
    const double seconds = text != nullptr ? std::strtod(text, &end) : -1;
    if (text == nullptr || end == text || seconds < 0) return kDelay;
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

Progress::Progress(const InputFile& input, bool quiet)
    : _input(input),
      _enabled(!quiet && isatty(STDERR_FILENO)),
      _start(Clock::now() + delay()),
      _last(_start - kInterval) {}

Progress::~Progress() { clearLine(); }

void Progress::tick(int entries) {
    _entries = entries;
    if (!_enabled || ++_calls % kClockEvery != 0) return;
    const Clock::time_point now = Clock::now();
    if (now < _start || now - _last < kInterval) return;
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
