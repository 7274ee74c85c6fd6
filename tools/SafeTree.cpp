#include "SafeTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace tuskel_tool {

namespace {

const mode_t kNewDirectory = 0700;  // opened up by finish() once filled
const mode_t kNewFile = 0600;

std::string systemError() { return std::strerror(errno); }

// Whatever opening a component of `parent` found instead of a directory.
std::string notADirectory(int parent, int error, const std::string& component) {
    struct stat st;
    const bool link = fstatat(parent, component.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(st.st_mode);
    if (link || error == ELOOP) return "refused: path goes through the symbolic link " + component;
    if (error == ENOTDIR) return "refused: " + component + " is not a directory";
    return component + ": " + std::strerror(error);
}

}  // namespace

std::vector<std::string> pathComponents(const std::string& name) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (start <= name.size()) {
        size_t slash = name.find('/', start);
        if (slash == std::string::npos) slash = name.size();
        std::string part = name.substr(start, slash - start);
        if (!part.empty() && part != ".") parts.push_back(part);
        start = slash + 1;
    }
    return parts;
}

std::string SafeTree::refusal(const std::string& name) {
    if (name.find('\0') != std::string::npos) return "refused: the name holds a NUL byte";
    if (!name.empty() && name[0] == '/') return "refused: absolute path";
    const std::vector<std::string> parts = pathComponents(name);
    if (std::find(parts.begin(), parts.end(), "..") != parts.end()) return "refused: path contains \"..\"";
    if (parts.empty()) return "refused: empty name";
    return "";
}

SafeTree::SafeTree(const std::string& root, mode_t umask) : _madeOnTheWay(0777 & ~umask) {
    // The root is the user's own path: made as mkdir -p would, links and all.
    for (size_t slash = root.find('/', 1); slash != std::string::npos; slash = root.find('/', slash + 1)) {
        mkdir(root.substr(0, slash).c_str(), 0777);
    }
    if (mkdir(root.c_str(), 0777) != 0 && errno != EEXIST) throw std::runtime_error(root + ": " + systemError());
    _root = open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (_root < 0) throw std::runtime_error(root + ": " + systemError());
}

SafeTree::~SafeTree() {
    if (_cachedFd >= 0) close(_cachedFd);
    if (_root >= 0) close(_root);
}

// Walks `count` components down from the root, each opened without
// following a link (and created first when asked).
int SafeTree::_openPath(const std::vector<std::string>& components, size_t count, bool create, std::string& why) {
    int fd = dup(_root);
    if (fd < 0) {
        why = systemError();
        return -1;
    }
    for (size_t i = 0; i < count; ++i) {
        const std::string& part = components[i];
        if (create && mkdirat(fd, part.c_str(), kNewDirectory) == 0) {
            std::string path;
            for (size_t j = 0; j <= i; ++j) path += components[j] + "/";
            _directories.push_back({path, _madeOnTheWay, 0, false});
        } else if (create && errno != EEXIST) {
            why = part + ": " + systemError();
            close(fd);
            return -1;
        }
        int next = openat(fd, part.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (next < 0) why = notADirectory(fd, errno, part);
        close(fd);
        if (next < 0) return -1;
        fd = next;
    }
    return fd;
}

int SafeTree::_parent(const std::string& name, std::string& leaf, std::string& why) {
    why = refusal(name);
    if (!why.empty()) return -1;
    std::vector<std::string> parts = pathComponents(name);
    leaf = parts.back();
    std::string path;
    for (size_t i = 0; i + 1 < parts.size(); ++i) path += parts[i] + "/";
    // Entries of one directory tend to come together: keep its descriptor.
    if (_cachedFd >= 0 && path == _cachedPath) return _cachedFd;
    int fd = _openPath(parts, parts.size() - 1, true, why);
    if (fd < 0) return -1;
    if (_cachedFd >= 0) close(_cachedFd);
    _cachedFd = fd;
    _cachedPath = path;
    return fd;
}

int SafeTree::createFile(const std::string& name, bool overwrite, std::string& why) {
    std::string leaf;
    int parent = _parent(name, leaf, why);
    if (parent < 0) return -1;
    const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    int fd = openat(parent, leaf.c_str(), flags, kNewFile);
    if (fd < 0 && errno == EEXIST) {
        struct stat st;
        if (fstatat(parent, leaf.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode)) {
            why = "refused: a directory of that name is in the way";
            return -1;
        }
        if (!overwrite) {
            why = "exists; kept (-o overwrites)";
            return -1;
        }
        // The old file (or link: never followed) goes; the new one is made
        // afresh, so nothing is written through what was there.
        if (unlinkat(parent, leaf.c_str(), 0) != 0) {
            why = systemError();
            return -1;
        }
        fd = openat(parent, leaf.c_str(), flags, kNewFile);
    }
    if (fd < 0) why = systemError();
    return fd;
}

bool SafeTree::createDirectory(const std::string& name, unsigned int mode, time_t mtime, std::string& why) {
    std::vector<std::string> parts = pathComponents(name);
    if (parts.empty() && !name.empty() && name[0] != '/') return true;  // "./": the root itself
    why = refusal(name);
    if (!why.empty()) return false;
    int fd = _openPath(parts, parts.size(), true, why);
    if (fd < 0) return false;
    close(fd);
    _directories.push_back({name, mode, mtime, true});
    return true;
}

bool SafeTree::createSymlink(const std::string& name, const std::string& target, bool overwrite, std::string& why) {
    // The link must resolve inside the tree from where it stands. ".." only
    // leads, so no link in the tree (never followed while writing, but
    // followed later) can make a target that climbs after a name go further.
    long depth = static_cast<long>(pathComponents(name).size()) - 1;
    if (target.find('\0') != std::string::npos) {
        why = "refused: symbolic link target holds a NUL byte";
        return false;
    }
    if (target.empty() || target[0] == '/') {
        why = "refused: symbolic link to an absolute path";
        return false;
    }
    bool named = false;
    for (const std::string& part : pathComponents(target)) {
        const bool up = part == "..";
        depth += up ? -1 : 1;
        if (depth < 0 || (up && named)) {
            why = "refused: symbolic link leads out of the directory";
            return false;
        }
        named = named || !up;
    }
    std::string leaf;
    int parent = _parent(name, leaf, why);
    if (parent < 0) return false;
    if (symlinkat(target.c_str(), parent, leaf.c_str()) == 0) return true;
    if (errno == EEXIST && overwrite) {
        struct stat st;
        if (fstatat(parent, leaf.c_str(), &st, AT_SYMLINK_NOFOLLOW) == 0 && !S_ISDIR(st.st_mode) &&
            unlinkat(parent, leaf.c_str(), 0) == 0 && symlinkat(target.c_str(), parent, leaf.c_str()) == 0) {
            return true;
        }
    }
    why = errno == EEXIST ? "exists; kept (-o overwrites)" : systemError();
    return false;
}

void SafeTree::finish() {
    if (_cachedFd >= 0) close(_cachedFd);
    _cachedFd = -1;
    _cachedPath.clear();
    // Deepest first: a directory made read-only must not stop its children.
    std::stable_sort(_directories.begin(), _directories.end(), [](const Directory& a, const Directory& b) {
        return pathComponents(a.name).size() > pathComponents(b.name).size();
    });
    for (const Directory& d : _directories) {
        std::string why;
        std::vector<std::string> parts = pathComponents(d.name);
        int fd = _openPath(parts, parts.size(), false, why);
        if (fd < 0) continue;
        fchmod(fd, static_cast<mode_t>(d.mode & 0777));
        const struct timespec times[2] = {{d.mtime, 0}, {d.mtime, 0}};
        if (d.timed) futimens(fd, times);
        close(fd);
    }
}

}  // namespace tuskel_tool
