#ifndef TUSKEL_TOOLS_PROGRESS_H
#define TUSKEL_TOOLS_PROGRESS_H

#include <chrono>
#include <string>

namespace tuskel_tool {

class InputFile;

// A progress bar on standard error for work that takes more than about a
// second (TUSKEL_PROGRESS_DELAY seconds, if set): only when standard error
// is a terminal and the command is not quiet. It measures how far into the
// input the work has read.
class Progress {
public:
    Progress(const InputFile& input, bool quiet);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Cheap enough to call per entry and per block written; without a count
    // the last one given stands.
    void tick(int entries);
    void tick() { tick(_entries); }

    // Wipes a bar that is showing, so that a message can take the line.
    static void clearLine();

private:
    void _draw(int entries);

    const InputFile& _input;
    bool _enabled;
    std::chrono::steady_clock::time_point _start;  // when a bar may first appear
    std::chrono::steady_clock::time_point _last;   // when it was last drawn
    unsigned _calls = 0;
    int _entries = 0;
    static bool _showing;
};

}  // namespace tuskel_tool

#endif
