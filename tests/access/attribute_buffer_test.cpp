#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "tests/access/fake_fixture.h"

#include <gmock/gmock.h>

#include <cstring>

namespace cimple {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

class AttributeBufferTest : public WithFakeLibraries {
protected:
    // The buffer that the library fills with one attribute, 700.
    AttributeBuffer& filled(const fake::Attribute& attribute) {
        libraries->adapters.assign(1, {});
        libraries->adapters[0].ports.resize(1);
        libraries->adapters[0].attributes = {{uint16_t{700}, attribute}};
        buffer.size = RM_HBA_ATTRIBUTES_SIZE;
        EXPECT_EQ(rm::LRM_GetHBAAttributes(HBA_WWN{}, buffer.data(), &buffer.size), RM_STATUS_OK);
        return buffer;
    }

    AttributeBuffer buffer{RM_HBA_ATTRIBUTES_SIZE};
};

TEST_F(AttributeBufferTest, Integers) {
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04"s}), 700, "_Label"), 0x04030201u);
    EXPECT_THAT(log.take(), ElementsAre("_Label: [ 67305985 ]"));
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04\x05"s}), 700, "_Label"), 0x04030201u);
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02"s}), 700, "_Label"), 0x0201u);
    EXPECT_EQ(getHBAAttributeInt(filled({""s}), 700, "_Label"), 0u);
    log.take();

    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04"s}), 701, "_Label"), 0u);
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04"s, {}, 9}), 700, "_Label"), 0u);
    EXPECT_THAT(log.take(),
                ElementsAre("ERROR: RM_GetHBAAttributeValue HA__Label call failed (2)",
                            "ERROR: RM_GetHBAAttributeValue HA__Label call failed (9)"));
    EXPECT_FALSE(findHBAAttributeInt(buffer, 701, "_Label"));
}

TEST_F(AttributeBufferTest, Texts) {
    char out[attributeTextSize];
    EXPECT_TRUE(getAttributeText(out, filled({"2.82a4"s}), 700, "_Label"));
    EXPECT_STREQ(out, "2.82a4");
    EXPECT_THAT(log.take(), ElementsAre("_Label : [ 2.82a4 ]"));

    EXPECT_TRUE(getAttributeText(out, filled({"\x00\x90\xFA"s}), 700, "_Label"));
    EXPECT_EQ(std::memcmp(out, "\x00\x90\xFA\x00", 4), 0) << "a zero byte does not end the copy";

    EXPECT_TRUE(getAttributeText(out, filled({std::string(300, 'x')}), 700, "_Label"));
    EXPECT_EQ(std::string(out), std::string(255, 'x'));
    log.take();

    EXPECT_FALSE(getAttributeText(out, filled({"2.82a4"s, {}, 5}), 700, "_Label"));
    EXPECT_STREQ(out, "");
    EXPECT_THAT(log.take(), ElementsAre("ERROR: _Label: RM_GetHBAAttributes call failed (5)"));
}

TEST_F(AttributeBufferTest, Counters) {
    EXPECT_EQ(getAttributeCounter(filled({"\1\0\0\0\0\0\0\2"s}), 700), 0x0200000000000001u);
    EXPECT_EQ(getAttributeCounter(filled({"\1\0\0\0"s}), 700), 1u);
    EXPECT_FALSE(getAttributeCounter(filled({"\1\0\0\0"s}), 701));
}

// A length that a broken library makes up never leads out of the buffer.
TEST_F(AttributeBufferTest, LengthsAreCutAtTheBuffersEnd) {
    char out[attributeTextSize];
    const std::string last(RM_HBA_ATTRIBUTES_SIZE - 48, 'x');
    filled({last, 0xFFFF});
    const AttributeValue value = buffer.find(700, 0);
    EXPECT_EQ(value.bytes.data() + value.bytes.size(),
              static_cast<std::byte*>(buffer.data()) + RM_HBA_ATTRIBUTES_SIZE);
    EXPECT_TRUE(getAttributeText(out, buffer, 700, "_Label"));
}

TEST_F(AttributeBufferTest, ABufferHasAtMostTheLargestSize) {
    EXPECT_EQ(AttributeBuffer(1'000'000).size, RM_HBA_ATTRIBUTES_SIZE);
    EXPECT_EQ(AttributeBuffer(RM_PORT_STATISTICS_SIZE).size, RM_PORT_STATISTICS_SIZE);
}

TEST(AttributeBufferWithoutLibrary, HasNoValues) {
    LogCapture log;
    AttributeBuffer buffer(RM_HBA_ATTRIBUTES_SIZE);
    EXPECT_EQ(getHBAAttributeInt(buffer, 526, "_DeviceID"), 0u);
    char out[attributeTextSize];
    EXPECT_FALSE(getAttributeText(out, buffer, 526, "_DeviceID"));
    EXPECT_FALSE(getAttributeCounter(buffer, 1025));
    EXPECT_THAT(log.take(),
                ElementsAre("ERROR: RM_GetHBAAttributeValue HA__DeviceID call failed (1)",
                            "ERROR: _DeviceID: RM_GetHBAAttributes call failed (1)"));
}

} // namespace
} // namespace cimple
