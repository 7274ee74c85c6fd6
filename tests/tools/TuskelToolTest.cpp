#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "support/TestFiles.h"

using namespace tuskel_test;

namespace {

// The archives make_tool_archives.py makes with zip, zipfile, 7zz, bsdtar
// and gzip, once per run.
const std::string& archives() {
    static TempDir dir;
    static int made = runCommand("cd " + shellQuote(dir.path()) + " && python3 " + shellQuote(TUSKEL_MAKE_ARCHIVES));
    EXPECT_EQ(made, 0);
    return dir.path();
}

struct Outcome {
    int status;
    std::string out, err;
};

// Runs the tool in `cwd` with the given arguments (quoted by the caller).
Outcome tuskel(const std::string& arguments, const std::string& cwd = archives()) {
    TempDir capture;
    Outcome run;
    // Redirections among the arguments come after these, and win.
    run.status = runCommand("cd " + shellQuote(cwd) + " && " + shellQuote(TUSKEL_TOOL) + " >" +
                            shellQuote(capture.file("out")) + " 2>" + shellQuote(capture.file("err")) + " " + arguments);
    run.out = readFile(capture.file("out"));
    run.err = readFile(capture.file("err"));
    return run;
}

std::string inArchives(const std::string& command) { return commandOutput("cd " + shellQuote(archives()) + " && " + command); }

// name -> "size compressed crc", as unzip -v lists them.
std::map<std::string, std::string> unzipListing(const std::string& archive) {
    std::istringstream lines(inArchives("unzip -v " + archive));
    std::map<std::string, std::string> entries;
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream f(line);
        std::string size, method, compressed, ratio, date, time, crc, name;
        if (!(f >> size >> method >> compressed >> ratio >> date >> time >> crc) ||
            crc.find_first_not_of("0123456789abcdef") != std::string::npos) {
            continue;
        }
        std::getline(f >> std::ws, name);
        entries[name] = size + " " + compressed + " " + crc;
    }
    return entries;
}

std::map<std::string, std::string> tuskelListing(const std::string& archive) {
    Outcome run = tuskel("list --json " + archive);
    EXPECT_EQ(run.status, 0) << run.err;
    std::map<std::string, std::string> entries;
    const nlohmann::json listing = nlohmann::json::parse(run.out);
    for (const auto& e : listing["entries"]) {
        entries[e["name"]] = std::to_string(e["size"].get<long long>()) + " " +
                             std::to_string(e["compressed_size"].get<long long>()) + " " + e["crc32"].get<std::string>();
    }
    return entries;
}

// path mode mtime size, for every file and directory under `dir`.
std::string treeOf(const std::string& dir) {
    return commandOutput("cd " + shellQuote(dir) + " && find . -mindepth 1 -printf '%P %y %m %T@ %s\\n' | sort");
}

}  // namespace

// Every maker's archive lists, tests and unpacks as unzip sees it.
TEST(TuskelTool, AgreesWithUnzipOnEveryMakersArchives) {
    for (const char* archive : {"zip.zip", "zip0.zip", "pipe.zip", "python.zip", "python0.zip", "7z.zip", "bsdtar.zip"}) {
        SCOPED_TRACE(archive);
        EXPECT_EQ(tuskelListing(archive), unzipListing(archive));
        Outcome test = tuskel("test " + std::string(archive));
        EXPECT_EQ(test.status, 0) << test.err;
        EXPECT_TRUE(tuskel("cat " + std::string(archive)).out == inArchives("unzip -p " + std::string(archive)));
        EXPECT_TRUE(tuskel("cat " + std::string(archive) + " '*sub/*'").out ==
                    inArchives("unzip -p " + std::string(archive) + " '*sub/*'"));
    }
}

// Names, contents, modes and times as unzip extracts them.
TEST(TuskelTool, ExtractsWhatUnzipExtracts) {
    TempDir out;
    for (const char* archive : {"zip.zip", "pipe.zip", "7z.zip"}) {
        SCOPED_TRACE(archive);
        const std::string ours = out.file(std::string("t-") + archive), theirs = out.file(std::string("u-") + archive);
        Outcome run = tuskel("extract " + std::string(archive) + " -d " + shellQuote(ours));
        EXPECT_EQ(run.status, 0) << run.err;
        ASSERT_EQ(runCommand("cd " + shellQuote(archives()) + " && unzip -qo " + archive + " -d " + shellQuote(theirs)), 0);
        EXPECT_EQ(treeOf(ours), treeOf(theirs));
        EXPECT_EQ(runCommand("diff -r " + shellQuote(ours) + " " + shellQuote(theirs)), 0);
    }
}

// Nothing is written outside DIR, whatever the names and links say; an
// existing file is kept unless -o.
TEST(TuskelTool, ExtractNeverWritesOutsideTheDirectory) {
    TempDir top;
    const std::string dest = top.file("dest"), outside = top.file("outside");
    ASSERT_EQ(runCommand("mkdir -p " + shellQuote(dest) + " " + shellQuote(outside) + " && ln -s ../outside " +
                         shellQuote(dest + "/pre")), 0);
    Outcome run = tuskel("extract hostile.zip -d " + shellQuote(dest));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(commandOutput("ls -A " + shellQuote(outside)), "");
    EXPECT_EQ(readFile(dest + "/ok.txt"), "fine\n");
    EXPECT_EQ(readFile(dest + "/dup.txt"), "first\n");
    EXPECT_EQ(commandOutput("readlink " + shellQuote(dest + "/in")), "sub\n");
    // Directories made on the way get the mode mkdir gives, as unzip leaves them.
    EXPECT_EQ(commandOutput("stat -c %a " + shellQuote(dest + "/a/b")),
              commandOutput("mkdir " + shellQuote(top.file("new")) + " && stat -c %a " + shellQuote(top.file("new"))));
    for (const char* refused : {"../evil.txt: refused: path contains \"..\"", "/outside/abs.txt: refused: absolute path",
                                "out: refused: symbolic link leads out", "in/through.txt: refused: path goes through",
                                "pre/through.txt: refused: path goes through", "dup.txt: exists; kept",
                                "nul: refused: symbolic link target holds a NUL", "a/b/x: refused: symbolic link leads out",
                                "long: refused: link target too long",
                                "esc\\x1b/f.txt: refused: path goes through the symbolic link esc\\x1b\n"}) {
        EXPECT_NE(run.err.find(refused), std::string::npos) << refused << "\n" << run.err;
    }
    EXPECT_EQ(tuskel("extract -o hostile.zip dup.txt -d " + shellQuote(dest)).status, 0);
    EXPECT_EQ(readFile(dest + "/dup.txt"), "second\n");
}

// One exit status per class of outcome, what each command prints, and every
// message naming the file and entry.
TEST(TuskelTool, StatusesOutputsAndMessages) {
    struct Case { const char* arguments; int status; std::string out, err; };
    const Case cases[] = {
        // Names as unzip shows them, printed so that they cannot steer the terminal.
        {"list zip.zip", 0, " caf\xC3\xA9.txt\n", ""},
        {"list names.zip", 0, " caf\xC3\xA9.txt\n", ""},
        {"list names.zip", 0, " bell\\x07.txt\n", ""},
        {"test badcrc.zip", 1, "", "tuskel: badcrc.zip: bad.txt: bad: CRC-32 "},
        {"test encrypted.zip", 1, "", "tuskel: encrypted.zip: run.sh: skipped: encrypted"},
        {"test desc.zip", 0, "desc.zip: 2 entries ok", ""},  // not the entry inside the stored ZIP
        {"test overlap.zip", 1, "3 of 3 entries bad", "tuskel: overlap.zip: c: bad: overlaps another entry"},
        // The entries behind a broken local header are still reached, through the directory.
        {"cat broken.zip", 1, inArchives("unzip -p broken.zip first.txt third.txt"),
         "tuskel: broken.zip: second.txt: bad: no local header"},
        // Nested archives are opened level by level.
        {"scan nested.zip", 0, " 700 zip", ""},
        {"scan nested.zip", 0, "nested.zip!inner.gz!inner!hello.txt\n", ""},
        {"scan nested.zip", 0, "nested.zip!readme.txt\n", ""},
        // Within the depth given: the level beyond is named, not opened, and the walk goes on behind it.
        {"scan --json --max-depth 2 nested.zip", 1,
         "{\"crc\":\"-\",\"error\":\"not opened: --max-depth reached\",\"path\":\"nested.zip!inner.gz!inner\"}\n"
         "{\"compressed_size\":17,", ""},
        // A bomb is cut at the limit even behind an entry that failed.
        {"scan --json --max-bytes 1M encbomb.zip", 1, "\"crc\":\"unchecked\",\"directory\":false,\"error\":\"stopped", ""},
        // Identification by content, steered by a name or a content type.
        {"type zip.zip tree.txt tree.txt.gz", 0,
         "zip.zip: 700 zip (archive)\ntree.txt: 100 text (text)\ntree.txt.gz: 705 gzip (archive)\n", ""},
        {"type zip.zip --name data.bin", 0, "zip.zip: 999 unknown (unknown)\n", ""},
        {"type /dev/stdin --name '' <zip.zip", 0, "/dev/stdin: 700 zip (archive)\n", ""},
        {"type /dev/stdin --name '' --content-type image <zip.zip", 0, "/dev/stdin: 700 zip (archive)\n", ""},
        {"type missing zip.zip", 74, "", "tuskel: missing: No such file or directory\n"},
        // A GZIP file: its one entry, named and sized by the header and trailer.
        {"list tree.txt.gz", 0, "    133890 ", ""},
        {"list tree.txt.gz", 0, " 100 text       tree.txt\n", ""},
        {"cat tree.txt.gz", 0, inArchives("gzip -dc tree.txt.gz"), ""},
        {"test tree.txt.gz", 0, "", ""},
        {"list tree.txt", 3, "", "tuskel: tree.txt: not a GZIP or ZIP archive"},
        {"frobnicate zip.zip", 64, "", ""},
        {"list", 64, "", ""},
        {"scan zip.zip --max-bytes 12X", 64, "", "--max-bytes"},
        {"scan zip.zip --max-bytes 4G", 0, "zip.zip!hello.txt\n", ""},  // beyond a 32-bit long
        {"list missing.zip", 74, "", "tuskel: missing.zip: No such file or directory"},
        {"cat zip.zip >/dev/full", 74, "", "tuskel: standard output: No space left on device"},
        {"extract zip.zip -d tree.txt/x", 74, "", "tree.txt"},
        {"--version", 0, "tuskel 0.1.0\n", ""},
        // decompress: the entries go to standard output, or with -d into numbered files with the result line on
        // standard output; -v adds the log.
        {"decompress tree.txt.gz", 0, inArchives("gzip -dc tree.txt.gz"), "tuskel: result 0: ok; 1 entry\n"},
        {"decompress -v -d out tree.txt.gz", 0, "tuskel: result 0: ok; 1 entry\n",
         "[DBG][EntryProcessor:26] find entry[tree.txt], usize[133890]\n"},
        {"decompress tree.txt", 3, "", "tuskel: result 3: not supported"},
        {"decompress missing.gz", 74, "", "tuskel: missing.gz: No such file or directory"},
        {"decompress -d tree.txt/out tree.txt.gz", 74, "", "tuskel: tree.txt/out: Not a directory"},
        {"decompress tree.txt.gz >/dev/full", 74, "", "tuskel: standard output: No space left on device"},
        {"", 64, "", "A subcommand is required"},
        {"decompress -x tree.txt.gz", 64, "", "The following argument was not expected: -x"},
        {"decompress tree.txt.gz tree.txt.gz", 64, "", "The following argument was not expected: tree.txt.gz"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.arguments);
        Outcome run = tuskel(c.arguments);
        EXPECT_EQ(run.status, c.status) << run.err;
        EXPECT_NE(run.out.find(c.out), std::string::npos) << run.out;
        EXPECT_NE(run.err.find(c.err), std::string::npos) << run.err;
    }
    for (const char* command : {"", "list", "test", "extract", "cat", "type", "scan", "decompress"}) {
        Outcome help = tuskel(std::string(command) + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_NE(help.out.find("74  input or output error"), std::string::npos) << command;
    }
    EXPECT_TRUE(readFile(archives() + "/out/1") == inArchives("gzip -dc tree.txt.gz"));
}

// A progress bar only on a terminal, and never with -q.
TEST(TuskelTool, ShowsProgressOnlyOnATerminal) {
    const std::string onTerminal = "TUSKEL_PROGRESS_DELAY=0 python3 -c 'import pty, sys; pty.spawn(sys.argv[1:])' " +
                                   shellQuote(TUSKEL_TOOL);
    EXPECT_NE(inArchives(onTerminal + " test zip0.zip").find("% ["), std::string::npos);
    EXPECT_EQ(inArchives(onTerminal + " -q test zip0.zip"), "");
    EXPECT_EQ(inArchives("TUSKEL_PROGRESS_DELAY=0 " + shellQuote(TUSKEL_TOOL) + " test zip0.zip 2>&1"),
              "zip0.zip: 9 entries ok\n");
}

// A gigabyte of zeros ends its branch at the limit; the walk goes on and
// memory stays small.
TEST(TuskelTool, ScanStopsABombInBoundedMemory) {
    TempDir dir;
    ASSERT_EQ(runCommand("cd " + shellQuote(dir.path()) + " && head -c 1G /dev/zero >zeros && echo after >after.txt &&"
                         " zip -q bomb.zip zeros after.txt && rm zeros"), 0);
    Outcome run = tuskel("-q scan bomb.zip", dir.path());
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.out.find("bomb.zip!zeros: stopped at"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("ok"), std::string::npos);
    EXPECT_NE(run.out.find("bomb.zip!after.txt\n"), std::string::npos) << run.out;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    const long kib = std::stol(commandOutput("cd " + shellQuote(dir.path()) + " && /usr/bin/time -f %M " +
                                             shellQuote(TUSKEL_TOOL) + " -q scan bomb.zip 2>&1 >/dev/null | tail -1"));
    EXPECT_LT(kib, 64 * 1024);
#endif
}

// A self-extractor lists, tests and extracts like the archive inside it.
TEST(TuskelTool, OpensSelfExtractors) {
    static TempDir dir;
    ASSERT_EQ(runCommand("cd " + shellQuote(dir.path()) + " && python3 " + shellQuote(TUSKEL_MAKE_EXES) + " >/dev/null"), 0);
    for (const char* exe : {"pe-_winzip.exe", "pe-data740.exe", "ne-6a4.exe", "dos.exe"}) {
        SCOPED_TRACE(exe);
        const std::string path = dir.file(exe);
        EXPECT_EQ(tuskelListing(path), unzipListing(path));
        EXPECT_EQ(tuskel("test " + shellQuote(path)).status, 0);
        TempDir out;
        EXPECT_EQ(tuskel("extract " + shellQuote(path) + " -d " + shellQuote(out.file("t"))).status, 0);
        ASSERT_EQ(runCommand("unzip -qo " + shellQuote(path) + " -d " + shellQuote(out.file("u")) + " 2>/dev/null"), 0);
        EXPECT_EQ(runCommand("diff -r " + shellQuote(out.file("t")) + " " + shellQuote(out.file("u"))), 0);
    }
    EXPECT_EQ(tuskel("list " + shellQuote(dir.file("pe-plain.exe"))).status, 3);
}
