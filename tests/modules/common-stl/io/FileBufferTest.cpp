// The file-backed buffer's own life (named files, close and open) and its
// faults made with real kernel limits: a missing directory, a full disk
// (RLIMIT_FSIZE), a file cut from outside in the middle of a move, and no
// descriptor left for a temporary file. After each, the size and the bytes
// before the failure are intact, and the next call shows no lock was left.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>

#include "io/FileBufferBase.h"
#include "io/SmartBufferBase.h"
#include "support/BufferScript.h"
#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "support/Thrown.h"

using namespace QRN_SPACE;
using namespace tuskel_test;

namespace {

const std::string kBroken = "Broken BufferBase @ modules/common-stl/include/io/BufferBase, line96";
const std::string kHeader = " @ modules/common-stl/include/io/BufferBase, line";
const std::string kSource = " @ io/BufferBase, line";

std::string error(int number) { return std::strerror(number); }

int entries(const std::string& dir) {
    int n = 0;
    DIR* d = opendir(dir.c_str());
    for (dirent* e; d != nullptr && (e = readdir(d)) != nullptr;) n += e->d_name[0] != '.';
    if (d != nullptr) closedir(d);
    return n;
}

std::string head(BufferBase& buffer, long n) {
    std::string out(size_t(n), '\0');
    out.resize(size_t(buffer.read(0, &out[0], int(n))));
    return out;
}

// Runs f in a child process whose files cannot grow past `limit` bytes (a
// write there fails with EFBIG, SIGXFSZ being ignored) and answers its text.
std::string withFileSizeLimit(rlim_t limit, const std::function<std::string()>& f) {
    int out[2];
    if (pipe(out) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        close(out[0]);
        signal(SIGXFSZ, SIG_IGN);
        rlimit fsize;
        getrlimit(RLIMIT_FSIZE, &fsize);
        fsize.rlim_cur = limit;
        std::string text = setrlimit(RLIMIT_FSIZE, &fsize) == 0 ? f() : "setrlimit failed";
        ssize_t ignored = ::write(out[1], text.data(), text.size());
        (void)ignored;
        _exit(0);
    }
    close(out[1]);
    std::string text;
    char buf[4096];
    for (ssize_t n; (n = read(out[0], buf, sizeof buf)) > 0;) text.append(buf, size_t(n));
    close(out[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? text : "child died";
}

// Lifts the file size limit of the calling process back to its maximum.
void liftFileSizeLimit() {
    rlimit fsize;
    getrlimit(RLIMIT_FSIZE, &fsize);
    fsize.rlim_cur = fsize.rlim_max;
    setrlimit(RLIMIT_FSIZE, &fsize);
}

}  // namespace

TEST(FileBufferBase, ANamedFileLivesExactlyAsLongAsItsBuffer) {
    TempDir dir;
    bool unwound = false;
    try {
        FileBufferBase buffer(dir.path().c_str());
        buffer.append("abc", 3);
        EXPECT_EQ(entries(dir.path()), 1);
        buffer.read(-1);
    } catch (IOException&) {
        unwound = entries(dir.path()) == 0;  // gone by the time the handler runs
    }
    EXPECT_TRUE(unwound);
    FileBufferBase missing(dir.file("missing").c_str());
    EXPECT_FALSE(missing.isValid());
    EXPECT_EQ(thrown<IOException>([&] { missing.append('x'); }), kBroken);
    EXPECT_EQ(missing.getFileDescriptor(), -1);
    {
        SmartBufferBase::_basePath = dir.file("missing");
        SmartBufferBase smart(POLICY_FILE);
        SmartBufferBase::_basePath.clear();
        EXPECT_EQ(thrown<IOException>([&] { smart.write(0, 'x'); }), kBroken);
    }
    EXPECT_EQ(entries(dir.path()), 0);
}

TEST(FileBufferBase, CloseAndOpenServeNamedFilesAndReopeningEmptiesTheFile) {
    const std::string noName = "The method is not supported, if the file name is empty.";
    FileBufferBase anonymous;
    EXPECT_EQ(thrown<IOException>([&] { anonymous.close(); }), noName + kSource + "1017");
    EXPECT_EQ(thrown<IOException>([&] { anonymous.open(); }), noName + kSource + "1032");

    TempDir dir;
    FileBufferBase named(dir.path().c_str());
    named.append(patternBytes(5000).data(), 5000);
    named.truncate(6);
    struct stat st;
    ASSERT_EQ(fstat(named.getFileDescriptor(), &st), 0);
    EXPECT_EQ(st.st_size, 5000);  // intended: the file is never shortened
    named.close();
    EXPECT_EQ(named.getFileDescriptor(), -1);
    EXPECT_EQ(thrown<IOException>([&] { named.read(0); }), kBroken);
    EXPECT_EQ(entries(dir.path()), 1);
    named.open();
    // Intended: the file comes back empty while the size stays.
    EXPECT_EQ(named.getSize(), 6);
    EXPECT_EQ(head(named, 6), "");
    EXPECT_EQ(thrown<IOException>([&] { named.read(0); }), error(EIO) + kSource + "791");
}

// A move down has moved two 1024-byte chunks when the third comes up short;
// a move up starts at the end, which is gone; a byte read finds nothing.
TEST(FileBufferBase, AFileCutFromOutsideFailsAMoveAndKeepsWhatCameBefore) {
    const std::string data = patternBytes(5000);
    // Each call, its failure, and the head it leaves: the bytes moved stay moved.
    const std::tuple<std::function<void(BufferBase&)>, std::string, std::string> cases[] = {
        {[](BufferBase& b) { b.cut(100, 50); }, error(EIO) + kSource + "890", data.substr(0, 100) + data.substr(150, 2048)},
        {[](BufferBase& b) { b.insert(100, "ab", 2); }, error(EIO) + kSource + "874", data.substr(0, 100)},
        {[](BufferBase& b) { b.read(3000); }, error(EIO) + kSource + "791", data.substr(0, 100)}};
    for (const auto& [op, want, kept] : cases) {
        FileBufferBase buffer;
        buffer.append(data.data(), 5000);
        ASSERT_EQ(ftruncate(buffer.getFileDescriptor(), 3000), 0);
        EXPECT_EQ(thrown<IOException>(std::bind(op, std::ref(buffer))), want);
        EXPECT_EQ(buffer.getSize(), 5000);
        EXPECT_EQ(head(buffer, long(kept.size())), kept);
    }
}

// Files of the child may not pass 4096 bytes. Each failing call reports
// the system's text, leaves the size and the content; the smart buffer
// keeps its memory store and moves once the disk has room again.
TEST(FileBufferBase, AFullDiskFailsTheCallThatHitsItAndLosesNothing) {
    const std::string data = patternBytes(5000);
    const std::string report = withFileSizeLimit(4096, [&] {
        std::string text;
        FileBufferBase file;
        file.append(data.data(), 3000);
        const std::function<void()> calls[] = {[&] { file.append(data.data(), 2000); },
                                               [&] { file.write(10000, 'x'); },
                                               [&] { file.insert(0, data.data(), 2000); }};
        for (const auto& call : calls) {
            text += thrown<IOException>(call) + "\n";
            text += std::to_string(file.getSize()) + (head(file, 3000) == data.substr(0, 3000) ? " kept\n" : " lost\n");
        }
        SmartSettings restore;
        SmartBufferBase::_barrier = 2000;
        SmartBufferBase smart;
        smart.write(0, data.data(), 5000);
        text += thrown<IOException>([&] { smart.write(0, 'Z'); }) + "\n";
        text += std::to_string(smart.getFileDescriptor()) + " " + (readAll(smart) == data ? "kept\n" : "lost\n");
        liftFileSizeLimit();
        smart.write(0, 'Z');
        text += (smart.getFileDescriptor() != -1 ? "file " : "memory ") + readAll(smart).substr(0, 1);
        return text;
    });
    const std::string full = error(EFBIG) + kHeader;
    EXPECT_EQ(report, full + "355\n3000 kept\n" + full + "346\n3000 kept\n" + full + "355\n3000 kept\n" + full +
                          "355\n-1 kept\nfile Z");
}

// With every descriptor below the limit taken, the move cannot make its
// file: the call fails, the memory store stays, and a later call moves.
TEST(SmartBufferBase, AMoveWithoutATemporaryFileKeepsMemoryAndTriesAgain) {
    SmartSettings restore;
    SmartBufferBase::_barrier = 2000;
    const std::string data = patternBytes(5000);
    SmartBufferBase buffer;
    buffer.append(data.data(), 5000);
    {
        // The sanitizers' type checks open a pipe the first time they meet
        // a type: they meet these here, while descriptors are free.
        TempDir dir;
        std::unique_ptr<BufferBase> warm(new FileBufferBase(dir.file("missing").c_str()));
        EXPECT_EQ(thrown<IOException>([&] { warm->append("x", 1); }), kBroken);
    }
    rlimit files, saved;
    getrlimit(RLIMIT_NOFILE, &saved);
    const int lowest = open("/dev/null", O_RDONLY);  // every descriptor below it is taken
    ASSERT_GE(lowest, 0);
    close(lowest);
    files = saved;
    files.rlim_cur = rlim_t(lowest);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
    const std::string failure = thrown<IOException>([&] { buffer.write(0, 'Z'); });
    setrlimit(RLIMIT_NOFILE, &saved);
    EXPECT_EQ(failure, kBroken);
    EXPECT_EQ(buffer.getFileDescriptor(), -1);
    EXPECT_EQ(readAll(buffer), data);
    buffer.write(0, 'Z');
    EXPECT_NE(buffer.getFileDescriptor(), -1);
    EXPECT_EQ(readAll(buffer), "Z" + data.substr(1));
}
