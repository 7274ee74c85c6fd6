// A host built apart from the project, from nothing but the installed header
// and the plain C++98 host doubles: if a slot, a field or an exported name
// differed from what the library was built with, this would fail to link or
// misbehave.
//
//   host IN.gz OUT    unpacks the single entry of IN.gz into OUT
#include <tuskel/CommonDecompressor.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "../HostDoubles.h"

namespace {

std::string gLog;

void collectLog(const char* piece) { gLog += piece; }

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::ifstream in(argv[1], std::ios::binary);
    std::string input((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    tuskel_test::MemoryHostBuffer archive(input);
    tuskel_test::RecordingEntryProcessor entries;
    CommonDecompressor decompressor;
    decompressor.setLogger(CommonDecompressor::LOG_DEBUG, collectLog);
    int result = decompressor.decompress(&archive, &entries);
    std::string out = entries.contents().empty() ? "" : entries.contents()[0];
    std::ofstream(argv[2], std::ios::binary).write(out.data(), out.size());  // the caller compares it

    const char* wrong = 0;
    if (decompressor.level != 3 || decompressor.callback != collectLog) wrong = "fields out of place";
    if (result != CommonDecompressor::RESULT_OK || entries.finished != 1) wrong = "not unpacked";
    if (entries.records.size() != 1 || entries.records[0].usize != int(out.size())) wrong = "size out of place";
    if (gLog.find("[DBG][EntryProcessor:26] find entry[") != 0) wrong = "no entry line";
    if (wrong != 0) std::fprintf(stderr, "host: %s\nlog:\n%s", wrong, gLog.c_str());
    return wrong != 0 ? 1 : 0;
}
