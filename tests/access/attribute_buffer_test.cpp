#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "tests/access/fake_fixture.h"

namespace cimple {
namespace {

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
    char out[attributeTextSize];
};

TEST_F(AttributeBufferTest, Integers) {
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04\x05"s}), 700, "_L"), 0x04030201u);
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02"s}), 700, "_L"), 0x0201u);
    EXPECT_EQ(getHBAAttributeInt(buffer, 701, "_L"), 0u);
    EXPECT_EQ(getHBAAttributeInt(filled({"\x01\x02\x03\x04"s, {}, 9}), 700, "_L"), 0u);
    EXPECT_EQ(log.take().back(), "ERROR: RM_GetHBAAttributeValue HA__L call failed (9)");
    EXPECT_EQ(getAttributeCounter(filled({"\1\0\0\0\0\0\0\2"s}), 700), 0x0200000000000001u);
    EXPECT_EQ(getAttributeCounter(filled({"\1\0\0\0"s}), 700), 1u);
    EXPECT_FALSE(getAttributeCounter(buffer, 701));
}

TEST_F(AttributeBufferTest, Texts) {
    EXPECT_TRUE(getAttributeText(out, filled({"\x41\x00\x42"s}), 700, "_L"));
    EXPECT_EQ(std::string(out, 4), "\x41\x00\x42\x00"s) << "a zero byte does not end the copy";
    EXPECT_TRUE(getAttributeText(out, filled({std::string(300, 'x')}), 700, "_L"));
    EXPECT_EQ(std::string(out), std::string(255, 'x'));
    EXPECT_FALSE(getAttributeText(out, filled({"2.82a4"s, {}, 5}), 700, "_L"));
    EXPECT_STREQ(out, "");
}

// A length that a broken library makes up never leads out of the buffer.
TEST_F(AttributeBufferTest, LengthsAreCutAtTheBuffersEnd) {
    filled({std::string(RM_HBA_ATTRIBUTES_SIZE - 48, 'x'), 0xFFFF});
    const AttributeValue value = buffer.find(700, 0);
    EXPECT_EQ(value.bytes.data() + value.bytes.size(),
              static_cast<std::byte*>(buffer.data()) + RM_HBA_ATTRIBUTES_SIZE);
    EXPECT_EQ(AttributeBuffer(1'000'000).size, RM_HBA_ATTRIBUTES_SIZE);
    unloadManagementLibraries();
    EXPECT_FALSE(getAttributeText(out, buffer, 700, "_L"));
    EXPECT_FALSE(getAttributeCounter(buffer, 700));
}

} // namespace
} // namespace cimple
