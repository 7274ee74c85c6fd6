#include "ZipTestSupport.h"

#include <gtest/gtest.h>

#include <exception>
#include <sstream>

#include "support/TestStreams.h"

using tuskel_test::commandOutput;
using tuskel_test::runCommand;
using tuskel_test::shellQuote;

namespace ziptest {

void python(const std::string& dir, const std::string& script) {
    std::string file = dir + "/script.py";
    tuskel_test::writeFile(file, script);
    ASSERT_EQ(runCommand("cd " + shellQuote(dir) + " && python3 script.py"), 0) << script;
}

namespace {

std::string unhex(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i + 1 < hex.size(); i += 2) out.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return out;
}

}  // namespace

std::vector<Listed> listEntries(const std::string& archive) {
    // One line per entry, fields separated by tabs, byte strings in hex.
    std::string out = commandOutput(
        "python3 -c '\n"
        "import sys, zipfile\n"
        "for i in zipfile.ZipFile(sys.argv[1]).infolist():\n"
        "    d = i.date_time\n"
        "    t = (d[0] - 1980) << 25 | d[1] << 21 | d[2] << 16 | d[3] << 11 | d[4] << 5 | d[5] // 2\n"
        "    print(i.orig_filename.encode(\"cp437\" if not i.flag_bits & 0x800 else \"utf-8\").hex(), i.CRC,\n"
        "          i.compress_size, i.file_size, i.header_offset, t, i.flag_bits, i.compress_type,\n"
        "          i.extra.hex() or \"-\", i.comment.hex() or \"-\", sep=\"\\t\")\n"
        "' " + shellQuote(archive));
    std::vector<Listed> entries;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream f(line);
        Listed e;
        std::string name, extra, comment;
        f >> name >> e.crc >> e.compressedSize >> e.size >> e.headerOffset >> e.dosTime >> e.flags >> e.method >> extra >>
            comment;
        e.name = unhex(name);
        e.extra = extra == "-" ? "" : unhex(extra);
        e.comment = comment == "-" ? "" : unhex(comment);
        entries.push_back(e);
    }
    return entries;
}

std::string unzipEntry(const std::string& archive, const std::string& name) {
    return commandOutput("unzip -p " + shellQuote(archive) + " " + shellQuote(name));
}

namespace {

// A small tree under dir/root: text, random bytes, an empty file, an empty
// directory and nested files.
void makeTree(const std::string& dir) {
    std::string root = dir + "/root";
    runCommand("mkdir -p " + shellQuote(root + "/sub/deeper") + " " + shellQuote(root + "/emptydir"));
    std::vector<std::pair<std::string, std::string>> files = {
        {"hello.txt", "hello, world\n"},
        {"empty.txt", ""},
        {"random.bin", tuskel_test::patternBytes(70000, 7)},
        {"sub/text.txt", std::string(100000, 'a') + "tail"},
        {"sub/deeper/one.bin", tuskel_test::patternBytes(1, 3)},
    };
    for (auto& f : files) tuskel_test::writeFile(root + "/" + f.first, f.second);
}

}  // namespace

void Recorder::releaseSession() {
    calls.push_back("release");
    // Runs inside the unarchiver's handler, so the exception it holds is
    // still current.
    try {
        if (std::current_exception()) std::rethrow_exception(std::current_exception());
    } catch (QRN_SPACE::Exception& e) {
        contained.push_back(e.getMessage());
    }
}

QRN_SPACE::OutputStream* Recorder::processEntry(QRN_SPACE::ArchiveEntryInfo* info, int& action) {
    _kept.emplace_back(info);
    calls.push_back("entry " + info->name);
    int answer = decide(*info);
    if (answer != kLeaveAlone) action = answer;
    _outs.emplace_back(new tuskel_test::CollectingOutputStream());
    seen.push_back({info, info->algorithm, _outs.back().get()});
    return _outs.back().get();
}

std::vector<std::string> Recorder::names() const {
    std::vector<std::string> out;
    for (const auto& s : seen) out.push_back(s.info->name);
    return out;
}

namespace {

// Python's zipfile: to files and to a stream that cannot seek, and archives
// with one entry that cannot be unpacked (bzip2, a 513-byte name) between
// good ones.
const char* const kPythonScript = R"PY(
import io, zipfile
class Unseekable(io.RawIOBase):
    def __init__(self): self.data = bytearray()
    def writable(self): return True
    def write(self, b): self.data += b; return len(b)
text = b"".join(b"line %d of a python entry\n" % i for i in range(3000))
def fill(z, mode, first):
    z.writestr("first.txt", text[:5000], first)
    z.writestr("deflated.txt", text, mode)
    z.writestr("small.txt", b"tiny", mode)
for name, mode in (("py_stored", zipfile.ZIP_STORED), ("py_deflated", zipfile.ZIP_DEFLATED)):
    with zipfile.ZipFile(name + ".zip", "w", mode) as z: fill(z, mode, zipfile.ZIP_STORED)
    out = Unseekable()
    with zipfile.ZipFile(out, "w", mode) as z: fill(z, mode, mode)
    open(name + "_stream.zip", "wb").write(out.data)
def broken(name, middle, mode):
    with zipfile.ZipFile(name, "w", zipfile.ZIP_DEFLATED) as z:
        z.writestr("a.txt", text[:3000])
        z.writestr(middle, text[:2000], mode)
        z.writestr("c.txt", text[:1000], zipfile.ZIP_STORED)
        z.writestr("d.txt", text)
broken("bzip2.zip", "b.txt", zipfile.ZIP_BZIP2)
broken("longname.zip", "b" * 513, zipfile.ZIP_DEFLATED)
broken("good.zip", "b.txt", zipfile.ZIP_DEFLATED)
# b's data: 160 bytes that no reader takes for a record, then three central
# records; the third points at offset 0.
import struct
record = struct.pack("<IHHHHIIIIHHHHHII", 0x02014B50, 20, 20, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0) + b"x"
with zipfile.ZipFile("planted.zip", "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("a.txt", text[:3000])
    z.writestr("b.txt", bytes(160) + record * 3, zipfile.ZIP_STORED)
    z.writestr("c.txt", text[:1000])
    z.writestr("d.txt", text)
)PY";

}  // namespace

tuskel_test::TempDir* ZipArchives::dir = nullptr;

void ZipArchives::SetUpTestSuite() {
    dir = new tuskel_test::TempDir();
    makeTree(dir->path());
    std::string d = shellQuote(dir->path());
    ASSERT_EQ(tuskel_test::runCommand("cd " + d + "/root && zip -q -r ../zip.zip . && zip -q -r -0 ../zip0.zip ."
                                      " && zip -q -r - . | cat > ../pipe.zip"),
              0);
    ziptest::python(dir->path(), kPythonScript);
    // An encrypted entry between good ones, by Info-ZIP itself.
    ASSERT_EQ(tuskel_test::runCommand("cd " + d + "/root && zip -q ../enc.zip hello.txt"
                                      " && zip -q -P pw ../enc.zip random.bin"
                                      " && zip -q ../enc.zip sub/text.txt sub/deeper/one.bin"),
              0);
}

void ZipArchives::TearDownTestSuite() {
    delete dir;
    dir = nullptr;
}

std::string ZipArchives::path(const std::string& name) { return dir->file(name); }

}  // namespace ziptest
