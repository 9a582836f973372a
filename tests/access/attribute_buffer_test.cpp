#include "access/attribute_buffer.h"
#include "access/entry_points.h"
#include "tests/access/fake_fixture.h"

#include <algorithm>

namespace cimple {
namespace {

using namespace std::string_literals;

class AttributeBufferTest : public WithFakeLibraries {
protected:
    // The buffer that the library fills with one attribute, 700.
    AttributeBuffer& filled(const fake::Attribute& attribute) {
        libraries->attributePlace = nullptr;
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

// Numbers have their width, whatever length the library tells; texts have that length.
TEST_F(AttributeBufferTest, NumbersHaveAWidthAndTextsALength) {
    const std::string bytes = "\1\2\3\4\5\0\7\x08"s;
    struct Row {
        std::optional<uint16_t> told;
        std::size_t length;
    };
    for (const Row& row : {Row{{}, 8}, Row{0, 0}, Row{1, 1}, Row{3, 3}, Row{6, 6}}) {
        filled({bytes, row.told});
        EXPECT_EQ(getHBAAttributeInt(buffer, 700, "_L"), 0x04030201u) << row.length;
        EXPECT_EQ(getAttributeCounter(buffer, 700), 0x0807000504030201u) << row.length;
        EXPECT_TRUE(getAttributeText(out, buffer, 700, "_L"));
        EXPECT_EQ(std::string(out, 9), bytes.substr(0, row.length) + std::string(9 - row.length, 0))
            << "a zero byte does not end the copy";
    }
    EXPECT_TRUE(getAttributeText(out, filled({std::string(300, 'x')}), 700, "_L"));
    EXPECT_EQ(std::string(out), std::string(255, 'x'));
}

TEST_F(AttributeBufferTest, AMissingValueIsZeroOrEmpty) {
    filled({"\1\2\3\4"s, {}, 9});
    EXPECT_EQ(getHBAAttributeInt(buffer, 700, "_L"), 0u);
    EXPECT_EQ(log.take().back(), "ERROR: RM_GetHBAAttributeValue HA__L call failed (9)");
    EXPECT_FALSE(getAttributeText(out, buffer, 700, "_L"));
    EXPECT_STREQ(out, "");
    EXPECT_EQ(getHBAAttributeInt(buffer, 701, "_L"), 0u);
    EXPECT_FALSE(getAttributeCounter(buffer, 701));
    unloadManagementLibraries();
    EXPECT_FALSE(getAttributeText(out, buffer, 700, "_L"));
    EXPECT_FALSE(getAttributeCounter(buffer, 700));
}

// Nothing that a broken library makes up leads out of the buffer.
TEST_F(AttributeBufferTest, ValuesEndWithTheBuffer) {
    EXPECT_EQ(AttributeBuffer(1'000'000).size, AttributeBuffer::capacity);
    filled({"", 0xFFFF});
    auto* const end = static_cast<char*>(buffer.data()) + AttributeBuffer::capacity;
    std::fill(end - 3, end, 'e');
    for (std::size_t left = 0; left < 4; ++left) {
        libraries->attributePlace = end - left;
        const uint32 number = 0x656565 & ((1u << 8 * left) - 1);
        EXPECT_EQ(getHBAAttributeInt(buffer, 700, "_L"), number);
        EXPECT_EQ(getAttributeCounter(buffer, 700), number);
        EXPECT_TRUE(getAttributeText(out, buffer, 700, "_L"));
        EXPECT_EQ(std::string(out), std::string(left, 'e'));
    }
}

} // namespace
} // namespace cimple
