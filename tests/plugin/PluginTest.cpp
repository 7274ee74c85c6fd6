#include <gtest/gtest.h>

#include <climits>

#include "HostDoubles.h"
#include "support/LogCapture.h"
#include "support/TestFiles.h"
#include "support/TestStreams.h"
#include "tuskel/CommonBufferBase.h"
#include "tuskel/EntryProcessor.h"

using B = CommonBufferBase;
using namespace tuskel_test;

static const char* const kOver = "off bigger than the buffer size\n";
static const std::string kFound = "[DBG][EntryProcessor:26] find entry[], usize[";

// Each operation on a host holding `in`: its result, the host's bytes
// afterwards (`out`; null: the host was never called) and the one error
// line. The host refuses the seek to -2.
TEST(CommonBufferBase, EveryOperationAgainstTheHost) {
    struct Case { const char* in; int limit; int (*op)(B&&); int result; const char* out; int line; const char* text; };
    const Case cases[] = {
        {"abc", 0, [](B&& b) { b.write(1, '\377'); return b.read(1); }, 255, "a\377c", 0, ""},  // limit 0: none
        {"abc", 0, [](B&& b) { return b.read(3); }, -1, "abc", 0, ""},  // the end of the data is not logged
        {"abc", 0, [](B&& b) { return b.read(-2); }, -1, "abc", 19, "seek fail\n"},
        {"abc", 0, [](B&& b) { char s[4]; return b.read(-2, s, 4); }, -1, "abc", 36, "seek fail\n"},
        {"abc", 0, [](B&& b) { b.write(-2, 'x'); return 0; }, 0, "abc", 51, "seek fail\n"},
        {"abc", 0, [](B&& b) { return b.write(-2, "xy", 2); }, -1, "abc", 66, "seek fail"},  // no line feed: intended
        {"abc", 4, [](B&& b) { b.write(4, 'x'); return 0; }, 0, nullptr, 46, kOver},
        {"abc", 4, [](B&& b) { return b.write(0, "xyz", 3); }, 3, "xyz", 0, ""},
        {"abc", 4, [](B&& b) { return b.write(1, "xyz", 3); }, 3, "axyz", 0, ""},
        {"abc", 4, [](B&& b) { return b.write(2, "xyz", 3); }, -1, nullptr, 61, kOver},
        {"abc", 4, [](B&& b) { return b.write(LONG_MAX, "xyz", 3); }, -1, nullptr, 61, kOver},  // the sum wraps
        {"abc", 0, [](B&& b) { b.insert(0, 'x'); return 0; }, 0, nullptr, 74, "insert function is null"},
        {"abc", 0, [](B&& b) { return b.insert(0, "xy", 2); }, -1, nullptr, 79, "insert function is null"},
        {"abc", 0, [](B&& b) { b.cut(0); return 0; }, 0, nullptr, 85, "cut function is null"},
        {"abc", 0, [](B&& b) { return b.cut(0, 2); }, -1, nullptr, 90, "cut function is null"},
        {"abc", 0, [](B&& b) { b.truncate(1); return 0; }, 0, nullptr, 116, "read(off,buf,len):seek fail"},
        // append wants 0 from the seek to the end: only an empty host takes it, past the limit too. Intended.
        {"abc", 1, [](B&& b) { b.append('x'); return 0; }, 0, "abc", 98, "append(c):seek fail"},
        {"abc", 1, [](B&& b) { return b.append("xy", 2); }, -1, "abc", 108, "append(buf,len):seek fail"},
        {"", 1, [](B&& b) { return b.append("xy", 2); }, 2, "xy", 0, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        LogCapture log(3);
        MemoryHostBuffer host(c.in);
        EXPECT_EQ(c.op(B(&host, c.limit)), c.result);  // gone at once, leaving the host
        EXPECT_EQ(host.data, c.out != nullptr ? c.out : c.in);
        EXPECT_EQ(host.calls == 0, c.out == nullptr);
        EXPECT_EQ(log.text(), c.line ? "[ERR][CommonBufferBase:" + std::to_string(c.line) + "] " + c.text + "\n" : "");
    }
}

// The action is left alone for a null entry (intended) and becomes 2 for
// any other, offered or not. Each entry's objects are released once whether
// the end comes twice, the entry comes again (as when an unarchiver
// recovers) or only the processor goes, which does not tell the host; the
// sanitizer build checks that.
TEST(EntryProcessor, SetsTheActionAndReleasesEveryEntryOnce) {
    auto entry = [](int usize) { auto e = new QRN_SPACE::ArchiveEntryInfo(); e->usize = usize; return e; };
    RecordingEntryProcessor host;
    LogCapture log(3);
    {
        EntryProcessor processor(&host), orphan(nullptr);
        int action = 7;
        EXPECT_EQ(processor.processEntry(nullptr, action), nullptr);
        EXPECT_EQ(action, 7);  // left alone: intended
        EXPECT_EQ(orphan.processEntry(entry(3), action), nullptr);
        EXPECT_EQ(action, 2);
        processor.gzipSize = 7;
        processor.processEntry(entry(5), action)->write("ab", 2);  // its own size goes before the trailer's
        processor.processEntry(entry(5), action)->write("AB", 2);
        processor.endUnarchiving();
        processor.endUnarchiving();
        processor.processEntry(entry(2), action)->write("cd", 2);
    }
    EXPECT_EQ(log.text(), "[ERR][EntryProcessor:13] entryInfo is NULL\n" + kFound + "3]\n" + kFound + "5]\n" + kFound +
                              "5]\n" + kFound + "2]\n");
    EXPECT_EQ(host.contents(), (std::vector<std::string>{"ab", "AB", "cd"}));
    EXPECT_EQ(host.finished, 2);
}

// Every outcome is a result, one line or two, and what the host was handed.
// Nothing thrown inside, by the library or by the host's own code, reaches
// the host: it becomes result 1 and a line from the handler around the run
// (52) or around the set-up (63). The trailer's size is offered when
// positive; a smaller one stops the entry's writes.
TEST(CommonDecompressor, EveryOutcomeIsAResultALineAndWhatTheHostGot) {
    enum Knob { kNone, kNullBuffer, kNullProcessor, kRefuse, kThrowOnGetBuffer, kOverstatedSize };
    const std::string seq = commandOutput("seq 300"), gz = commandOutput("seq 300 | gzip -n");
    const std::string body = gz.substr(0, gz.size() - 4), found = kFound + "1092]\n";
    const std::string unsupported = "[DBG][CommonDecompressor:66] Not find the archiver, not support\n";
    const std::string nullArgument = "[ERR][CommonDecompressor:19] hb == NULL || processor == NULL\n";
    struct Case { std::string input; Knob knob; int result; std::string log; size_t handed; };
    const Case cases[] = {
        {"", kNone, 3, unsupported, 0},
        {gz, kNullBuffer, 2, nullArgument, 0},
        {gz, kNullProcessor, 2, nullArgument, 0},
        {commandOutput("gzip </dev/null"), kNone, 0, kFound + "0]\n[DBG][EntryProcessor:33] tmp_info.usize == 0\n", 0},
        {body + bytes({0, 0, 0, 0x80}), kNone, 0, kFound + "0]\n[DBG][EntryProcessor:33] tmp_info.usize == 0\n", 0},
        {body + bytes({0xE8, 0x03, 0, 0}), kNone, 0, kFound + "1000]\n[ERR][CommonBufferBase:61] " + kOver + "\n", 1},
        {gz, kRefuse, 0, found + "[ERR][EntryProcessor:40] out_buffer == NULL\n", 0},
        {gz.substr(0, gz.size() / 2) + gz.substr(gz.size() - 4), kNone, 1,
         found + "[ERR][CommonDecompressor:52] Exception[inflate: error -5: ]\n", 1},
        {gz, kThrowOnGetBuffer, 1, found + "[ERR][CommonDecompressor:52] Exception[host refuses]\n", 0},
        // The trailer is looked for past the real end.
        {gz, kOverstatedSize, 1, "[ERR][CommonDecompressor:63] Exception[unexpected EOF]\n", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        LogCapture log(3);
        MemoryHostBuffer input(c.input);
        input.tellBias = c.knob == kOverstatedSize ? 100 : 0;
        RecordingEntryProcessor host;
        if (c.knob == kRefuse) host.refuse.insert(0);
        host.throwOnGetBuffer = c.knob == kThrowOnGetBuffer;
        CommonDecompressor decompressor;
        decompressor.setOptions(-1, &decompressor);  // ignored
        EXPECT_EQ(decompressor.decompress(c.knob == kNullBuffer ? nullptr : &input,
                                          c.knob == kNullProcessor ? nullptr : &host), c.result);
        EXPECT_EQ(log.text(), c.log);
        ASSERT_EQ(host.contents().size(), c.handed);
        for (const std::string& got : host.contents()) EXPECT_EQ(seq.compare(0, got.size(), got), 0);
        EXPECT_EQ(host.finished, c.result == 0 ? 1 : 0);
        EXPECT_EQ(input.calls == 0, c.result == 2);
    }
}
