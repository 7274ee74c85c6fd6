#include "UnarchiverTesting.h"
#include "filetype/FileTypeIdent.h"
#include "support/TestFiles.h"
#include "unarchiver/FileTypeProcessor.h"
#include "unarchiver/GzipUnarchiver.h"
#include "unarchiver/ZipUnarchiver.h"

using namespace unarchiver_test;
using tuskel_test::shellQuote;

namespace {

// Answers `action` for one type and 1 for the rest; remembers the last type asked about.
struct Answering : FileTypeProcessor::CallBack {
    Answering(int type, int action) : type(type), action(action) {}
    int getAction(int fileType) override { return asked = fileType, fileType == type ? action : 1; }
    int type, action, asked = 0;
};

}  // namespace

TEST(FileTypeProcessor, ChecksThroughTheCallBackThatCodeInstalls) {
    FileTypeProcessor fp;
    ChunkedInputStream in("PK\3\4 and more");
    std::string bin = "notes.bin", zipType = "application/zip";
    Answering skipZip(FileTypeIdent::TYPE_ZIP, 2);
    std::vector<int> got;
    got.push_back(fp.init());
    got.push_back(fp.getAction());
    got.push_back(fp.check(&in));  // DefaultCallBack: 1 for anything
    // Intended: setCallBack does not install its argument.
    got.push_back(FileTypeProcessor::setCallBack(&skipZip));
    got.push_back(fp.check(&in));
    got.push_back(skipZip.asked);
    FileTypeProcessor::call_back = &skipZip;
    got.push_back(fp.check(&in));
    got.push_back(fp.getAction());
    fp.setFileName(bin);  // an unknown extension: 999
    got.push_back(fp.check(tuskel_test::memoryBuffer("PK\3\4 and more").get()));
    got.push_back(skipZip.asked);
    fp.init();  // forgets the name
    got.push_back(fp.getAction());
    got.push_back(fp.check(&in));
    fp.setContentType(zipType);  // names no row: 999
    got.push_back(fp.check(&in));
    got.push_back(fp.requiredLength());
    FileTypeProcessor::call_back = nullptr;
    EXPECT_EQ(got, std::vector<int>({0, 0, 1, 0, 1, 0, 2, 2, 1, 999, 0, 2, 1, 1024}));
    EXPECT_EQ(in.position(), 0u);
}

// GZIP and ZIP made by gzip and zip, over a stream and over a buffer, the
// host checking each entry as it is offered: a callback answering 2 for
// text has the inflater drop the text entry (intended: the pending block
// goes too) and go on to the next, while noise is unpacked whole.
TEST(FileTypeProcessor, UnarchiversPassItToTheInflater) {
    tuskel_test::TempDir dir;
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "line " + std::to_string(i) + " of the text\n";
    const std::string noise = tuskel_test::patternBytes(80000, 4);
    tuskel_test::writeFile(dir.file("text.txt"), text);
    tuskel_test::writeFile(dir.file("noise.bin"), noise);
    ASSERT_EQ(tuskel_test::runCommand("cd " + shellQuote(dir.path()) + " && zip -q a.zip text.txt noise.bin && gzip -k text.txt"), 0);
    const std::string zip = tuskel_test::readFile(dir.file("a.zip")), gz = tuskel_test::readFile(dir.file("text.txt.gz"));
    Answering skipText(FileTypeIdent::TYPE_TXT, 2);
    FileTypeProcessor::call_back = &skipText;
    for (bool overBuffer : {false, true}) {
        FileTypeProcessor fp;
        Recorder zipHost, gzipHost;
        zipHost.decide = gzipHost.decide = [&](ArchiveEntryInfo& e, int& action) {
            fp.setFileName(e.name);
            fp.check(tuskel_test::memoryBuffer(e.name == "noise.bin" ? noise : text).get());
            action = A::ACTION_DECOMPRESS;
        };
        ChunkedInputStream zipIn(zip, 7), gzipIn(gz, 7);
        auto zipBuffer = tuskel_test::memoryBuffer(zip), gzipBuffer = tuskel_test::memoryBuffer(gz);
        overBuffer ? ZipUnarchiver(zipBuffer.get(), zipHost, &fp).start() : ZipUnarchiver(&zipIn, zipHost, &fp).start();
        overBuffer ? GzipUnarchiver(gzipBuffer.get(), gzipHost, &fp).start() : GzipUnarchiver(&gzipIn, gzipHost, &fp).start();
        EXPECT_EQ(zipHost.names() + gzipHost.names(), "text.txt noise.bin $ text.txt ") << overBuffer;
        EXPECT_TRUE(zipHost.outs.at(0)->data.empty() && zipHost.outs.at(1)->data == noise) << overBuffer;
        EXPECT_TRUE(gzipHost.outs.at(0)->data.empty()) << overBuffer;
    }
    FileTypeProcessor::call_back = nullptr;
}
