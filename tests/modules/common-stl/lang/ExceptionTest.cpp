#include <gtest/gtest.h>

#include <string>

#include "lang/Exception.h"

using namespace QRN_SPACE;

namespace {

template <class E>
void expectThrownWithLocation() {
    try {
        throwAt<E>("x", {"A", 7});
        FAIL() << "nothing thrown";
    } catch (Exception& e) {
        EXPECT_STREQ(e.toString(), "x");
        EXPECT_EQ(e.getMessage(), "x");
        EXPECT_EQ(e.getErrorLocation(), "A, line7");
        EXPECT_NE(dynamic_cast<E*>(&e), nullptr);
    }
}

}  // namespace

TEST(Exception, CarriesMessageAndLocationThroughTheWholeFamily) {
    expectThrownWithLocation<Exception>();
    expectThrownWithLocation<IOException>();
    expectThrownWithLocation<OutOfMemoryException>();
    expectThrownWithLocation<CompressionException>();
    expectThrownWithLocation<ArchivingException>();
    expectThrownWithLocation<EncodingException>();
}

TEST(Exception, LocationHasNoBlankBeforeTheLineNumber) {
    IOException e("unexpected EOF");
    e.file = "../../core/tuskel/src/utils/IOUtils";
    e.line = 25;
    EXPECT_EQ(e.getErrorLocation(), "../../core/tuskel/src/utils/IOUtils, line25");
}

TEST(Exception, DefaultIsEmptyAndConstOverloadNamesTheType) {
    Exception plain;
    EXPECT_STREQ(plain.toString(), "");
    EXPECT_EQ(plain.getErrorLocation(), ", line0");

    const IOException io("message");
    const RNObject& object = io;
    EXPECT_EQ(std::string(object.toString()), "N9QRN_SPACE11IOExceptionE");
    EXPECT_EQ(std::string(io.toString()), "N9QRN_SPACE11IOExceptionE");
}
