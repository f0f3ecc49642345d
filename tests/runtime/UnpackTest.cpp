#include "runtime/Unpack.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace kestrelguard {
namespace {

std::vector<std::byte> Bytes(std::initializer_list<int> values) {
    std::vector<std::byte> bytes;
    for (const int value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

/// What comes out, as text; "nothing" when nothing does.
std::string Unpacked(std::initializer_list<int> packed) {
    const auto data = Unpack(Bytes(packed));
    if (!data) {
        return "nothing";
    }
    std::string text;
    for (const std::byte value : *data) {
        text += std::to_integer<char>(value);
    }
    return text;
}

TEST(UnpackTest, PlainBytesComeOutAsTheyAre) {
    EXPECT_EQ("", Unpacked({0, 0, 0, 0}));
    EXPECT_EQ("ab", Unpacked({2, 0, 0, 0, 0x03, 'a', 'b'}));
    EXPECT_EQ("abcdefghi", Unpacked({9, 0, 0, 0, 0xFF, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 0x01, 'i'}));
}

TEST(UnpackTest, ARepeatGoesBackAndMayRepeatItself) {
    EXPECT_EQ("abcabc", Unpacked({6, 0, 0, 0, 0x07, 'a', 'b', 'c', 0x02, 0x00}));
    EXPECT_EQ("aaaaa", Unpacked({5, 0, 0, 0, 0x01, 'a', 0x00, 0x10}));
    EXPECT_EQ("ababababab", Unpacked({10, 0, 0, 0, 0x03, 'a', 'b', 0x01, 0x50}));
    // The longest repeat, from the farthest place.
    std::vector<std::byte> packed = Bytes({0x12, 0x10, 0, 0});
    std::string expected;
    for (int index = 0; index < 4096; ++index) {
        if (index % 8 == 0) {
            packed.push_back(std::byte{0xFF});
        }
        packed.push_back(static_cast<std::byte>(index * index));
        expected += static_cast<char>(index * index);
    }
    for (const int value : {0x00, 0xFF, 0xFF}) {
        packed.push_back(static_cast<std::byte>(value));
    }
    const auto data = Unpack(packed);
    ASSERT_TRUE(data);
    ASSERT_EQ(4096u + 18u, data->size());
    for (std::size_t index = 0; index < data->size(); ++index) {
        ASSERT_EQ(static_cast<std::byte>(expected[index % 4096]), (*data)[index]) << index;
    }
}

TEST(UnpackTest, DamagedDataGiveNothing) {
    EXPECT_EQ("nothing", Unpacked({}));
    EXPECT_EQ("nothing", Unpacked({2, 0, 0}));
    EXPECT_EQ("nothing", Unpacked({1, 0, 0, 0}));
    EXPECT_EQ("nothing", Unpacked({1, 0, 0, 0, 0x01}));
    EXPECT_EQ("nothing", Unpacked({4, 0, 0, 0, 0x01, 'a', 0x00}));              // half a repeat
    EXPECT_EQ("nothing", Unpacked({4, 0, 0, 0, 0x01, 'a', 0x01, 0x00}));        // from before the beginning
    EXPECT_EQ("nothing", Unpacked({3, 0, 0, 0, 0x01, 'a', 0x00, 0x00}));        // past the end
    EXPECT_EQ("nothing", Unpacked({0xFF, 0xFF, 0xFF, 0xFF, 0x01, 'a', 0, 0}));  // more than there can be
}

}  // namespace
}  // namespace kestrelguard
