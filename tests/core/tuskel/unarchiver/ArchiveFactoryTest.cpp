#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/TestStreams.h"
#include "unarchiver/ArchiveId.h"
#include "unarchiver/Crc.h"
#include "unarchiver/DeflateDecompressor.h"
#include "unarchiver/GzipUnarchiver.h"

using namespace QRN_SPACE;
using tuskel_test::bytes;
using tuskel_test::ChunkedInputStream;

namespace {

const std::string kGzipHeader = bytes({0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 3});

// A format whose test throws what the current case asks for.
struct ThrowingFormat : Unarchiver {
    static int kind;
    ThrowingFormat(InputStream*, ArchiveEntryProcessor&, DecompressProcessor*) {}
    ThrowingFormat(BufferBase*, ArchiveEntryProcessor&, DecompressProcessor*) {}
    static bool checkFormat(InputStream& in) {
        in.read();
        if (kind == 1) throw IOException("short");
        if (kind == 2) throw ArchivingException("bad");
        if (kind == 3) throw CompressionException("other");
        return true;
    }
};
int ThrowingFormat::kind = 0;

// Appends an identifier to the registry for the life of a test.
struct ExtraFormat {
    SimpleArchiveId<ThrowingFormat> id;
    ExtraFormat() { ArchiveFactory::factory->push_back(&id); }
    ~ExtraFormat() { ArchiveFactory::factory->pop_back(); }
};

}  // namespace

TEST(ArchiveFactory, GzipIsRegisteredFirstAndAFailingTestFallsThrough) {
    ASSERT_NE(ArchiveFactory::factory, nullptr);
    ExtraFormat extra;

    // Starts with the GZIP magic yet would also suit the later format.
    ChunkedInputStream gz(kGzipHeader + "PK\3\4");
    ArchiveId* found = ArchiveFactory::identify(gz);
    EXPECT_EQ(found, (*ArchiveFactory::factory)[0]);
    EXPECT_EQ(gz.position(), 0u);
    std::unique_ptr<Crc> crc(found->crc());
    std::unique_ptr<Crc> other(found->crc());
    ASSERT_NE(dynamic_cast<Iso3309Crc*>(crc.get()), nullptr);
    crc->add("a", 1);
    EXPECT_EQ(other->crc(), 0u);  // independent objects

    ArchiveEntryProcessor processor;
    std::unique_ptr<Unarchiver> u(found->unarchiver(&gz, processor, nullptr));
    EXPECT_NE(dynamic_cast<GzipUnarchiver*>(u.get()), nullptr);

    struct Case {
        int kind;
        ArchiveId* expected;
    } cases[] = {{0, &extra.id}, {1, &ARCHIVEID_NONE}, {2, &ARCHIVEID_NONE}};
    for (const Case& c : cases) {
        ThrowingFormat::kind = c.kind;
        ChunkedInputStream in("abcdefgh");  // too short for the GZIP test
        EXPECT_EQ(ArchiveFactory::identify(in), c.expected) << c.kind;
    }
    ThrowingFormat::kind = 3;  // only the two format failures are absorbed
    ChunkedInputStream in("abcdefghijkl");
    EXPECT_THROW(ArchiveFactory::identify(in), CompressionException);
}

TEST(ArchiveFactory, EmptyIdentifiersRefuseEverything) {
    for (EmptyArchiveId* id : {&ARCHIVEID_NONE, &ARCHIVEID_UNKNOWN}) {
        ChunkedInputStream in(kGzipHeader);
        ArchiveEntryProcessor processor;
        EXPECT_FALSE(id->accept(in));
        EXPECT_EQ(id->unarchiver(&in, processor, nullptr), nullptr);
        EXPECT_EQ(id->unarchiver(static_cast<BufferBase*>(nullptr), processor, nullptr), nullptr);
        EXPECT_EQ(id->crc(), nullptr);
        EXPECT_FALSE(id->archivable());
        EXPECT_FALSE(id->entryArchivable(nullptr));
    }
    EXPECT_NE(&ARCHIVEID_NONE, &ARCHIVEID_UNKNOWN);
    EXPECT_EQ(PackFactory::factory, nullptr);
}

TEST(Decompressor, NewByAlgorithmKnowsOnlyDeflate) {
    std::unique_ptr<Decompressor> d(Decompressor::newByAlgorithm(1));
    ASSERT_NE(dynamic_cast<DeflateDecompressor*>(d.get()), nullptr);
    EXPECT_EQ(d->getAlgorithm(), 1);
    EXPECT_STREQ(d->getAlgorithmName(), "inflate");
    EXPECT_EQ(Decompressor::newByAlgorithm(0), nullptr);
    EXPECT_EQ(Decompressor::newByAlgorithm(2), nullptr);
}
