#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "support/TestStreams.h"
#include "unarchiver/Tuskel.h"

using namespace QRN_SPACE;

namespace {

template <class E>
std::string failure(const std::function<void()>& f) {
    try {
        f();
    } catch (E& e) {
        return e.getMessage();
    }
    return "no error";
}

}  // namespace

TEST(ArchiveModel, EntriesSortBySignedOrderOnly) {
    std::vector<std::unique_ptr<ArchiveEntryInfo>> entries;
    for (int order : {3, -2, 7, 0}) {
        entries.emplace_back(new ArchiveEntryInfo());
        entries.back()->order = order;
        entries.back()->name = std::to_string(order);
    }
    std::sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return *a < *b; });
    std::string names;
    for (const auto& e : entries) names += e->name + " ";
    EXPECT_EQ(names, "-2 0 3 7 ");

    ArchiveEntryInfo a, b;
    a.name = "a";
    b.name = "b";
    EXPECT_FALSE(a < b);  // equal keys are not less, whatever the names
    EXPECT_FALSE(b < a);
    EXPECT_EQ(a.algorithm, ArchiveConstants::ALGORITHM_UNKNOWN);
}

TEST(ArchiveModel, WritingSideAndUnimplementedDefaultsRefuse) {
    tuskel_test::ChunkedInputStream in("x");
    tuskel_test::CollectingOutputStream out;
    Unarchiver unarchiver;
    Archiver archiver;
    Encoder encoder;
    Decoder decoder;
    EXPECT_EQ(failure<ArchivingException>([&] { unarchiver.start(); }), "Unimplemented");
    EXPECT_EQ(failure<ArchivingException>([&] { archiver.addEntry(nullptr, in); }), "Unimplemented");
    EXPECT_EQ(failure<ArchivingException>([&] { archiver.addRawEntry(nullptr, in); }), "Unimplemented");
    EXPECT_EQ(failure<ArchivingException>([&] { archiver.addRawEntry(nullptr); }), "Unimplemented");
    EXPECT_EQ(failure<ArchivingException>([&] { archiver.finish(); }), "Unimplemented");
    EXPECT_EQ(failure<EncodingException>([&] { encoder.encode(in, out); }), "Unimplemented");
    EXPECT_EQ(failure<EncodingException>([&] { decoder.decode(in, out); }), "Unimplemented");
    try {
        Decompressor().decompress(in, out);
    } catch (CompressionException& e) {
        EXPECT_EQ(e.getErrorLocation(), "../../core/tuskel/include/unarchiver/Tuskel, line296");
    }
    EXPECT_STREQ(encoder.getAlgorithmName(), "none");
    EXPECT_EQ(decoder.getAlgorithm(), 0);
    EXPECT_EQ(Encoder::newByAlgorithm(1), nullptr);
    EXPECT_EQ(Decoder::newByAlgorithm(1), nullptr);
    EXPECT_TRUE(ArchiveProcessor().process(nullptr));
}

TEST(ArchiveModel, DefaultProcessorSkipsAndKeepsTheInfoUntilTheNextEntry) {
    ArchiveEntryProcessor processor;
    int action = 2;
    ArchiveEntryInfo* first = new ArchiveEntryInfo();
    EXPECT_EQ(processor.processEntry(first, action), nullptr);
    EXPECT_EQ(action, ArchiveConstants::ACTION_SKIP);
    first->usize = 42;  // an unarchiver records a data descriptor after the data
    action = 1;
    EXPECT_EQ(processor.processEntry(new ArchiveEntryInfo(), action), nullptr);
    EXPECT_EQ(action, ArchiveConstants::ACTION_SKIP);
}  // the leak checker proves both infos were released
