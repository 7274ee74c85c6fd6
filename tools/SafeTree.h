#ifndef TUSKEL_TOOLS_SAFETREE_H
#define TUSKEL_TOOLS_SAFETREE_H

#include <sys/types.h>

#include <ctime>
#include <string>
#include <vector>

namespace tuskel_tool {

// A directory that entries are extracted into, and nowhere else. Every
// path is resolved one component at a time relative to the directory's
// descriptor, never following a symbolic link, so neither an absolute name,
// nor "..", nor a link already in the tree or made by the archive itself can
// lead a write outside. Owns its descriptors.
class SafeTree {
public:
    // Opens (creating it if missing) the directory `root`; throws
    // std::runtime_error with the reason when it cannot. Directories made on
    // the way to an entry end up with mode 0777 less `umask`, as unzip
    // leaves them.
    SafeTree(const std::string& root, mode_t umask);
    ~SafeTree();
    SafeTree(const SafeTree&) = delete;
    SafeTree& operator=(const SafeTree&) = delete;

    // Why `name` may not be extracted at all (absolute, "..", empty, NUL),
    // or empty when it may.
    static std::string refusal(const std::string& name);

    // Creates the file `name` for writing (with its parent directories) and
    // answers its descriptor, or -1 with `why` set: it exists and
    // `overwrite` is off, something that is not a regular file is in the
    // way, a component is a symbolic link, or the system refused.
    int createFile(const std::string& name, bool overwrite, std::string& why);

    // Creates the directory `name` (and its parents); false with `why`.
    // Its mode and time are applied by finish().
    bool createDirectory(const std::string& name, unsigned int mode, time_t mtime, std::string& why);

    // Creates the symbolic link `name` to `target`, which must stay inside
    // the tree; false with `why`.
    bool createSymlink(const std::string& name, const std::string& target, bool overwrite, std::string& why);

    // Applies the modes and times of the directories made, deepest first,
    // once nothing more is written into them.
    void finish();

private:
    struct Directory {
        std::string name;
        unsigned int mode;
        time_t mtime;
        bool timed;  // false: made on the way, its time left alone
    };

    // The descriptor of the directory that holds the last component of
    // `name` (created as needed), or -1 with `why`; `leaf` is that component.
    int _parent(const std::string& name, std::string& leaf, std::string& why);
    int _openPath(const std::vector<std::string>& components, size_t count, bool create, std::string& why);

    mode_t _madeOnTheWay;  // the mode of directories made on the way
    int _root = -1;
    std::string _cachedPath;  // the parent directory opened last ...
    int _cachedFd = -1;       // ... and its descriptor
    std::vector<Directory> _directories;
};

// Splits an entry name into its path components, dropping empty ones and ".".
std::vector<std::string> pathComponents(const std::string& name);

}  // namespace tuskel_tool

#endif
