#include <gtest/gtest.h>

#include "support/Thrown.h"

using namespace QRN_SPACE;

// What each type throws with throwAt, caught as that very type.
template <class... E>
std::vector<std::string> thrownByEach() {
    return {tuskel_test::thrown<E>([] { throwAt<E>("x", {"A", 7}); })...};
}

TEST(Exception, CarriesMessageAndLocationThroughTheWholeFamily) {
    EXPECT_EQ((thrownByEach<Exception, IOException, OutOfMemoryException, CompressionException, ArchivingException,
                            EncodingException>()),
              std::vector<std::string>(6, "x @ A, line7"));  // intended: no blank before the line number
}
