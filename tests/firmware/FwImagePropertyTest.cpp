#include "tests/firmware/ImageBytes.h"

#include <cstring>
#include <random>

namespace vornadel::test
{
namespace
{

using Random = std::mt19937;

std::size_t upTo(Random& random, std::size_t most)
{
    return std::uniform_int_distribution<std::size_t>(0, most)(random);
}

constexpr std::size_t kNowhere = ~std::size_t{0};

bool isMark(unsigned first, unsigned second)
{
    const unsigned word = first << 8 | second;
    return word == 0xAA55 || word == 0x3CC3 || word == 0x55AA;
}

// The block's position, found by checking each offset from the start.
std::size_t blockOf(const std::uint8_t* bytes, std::size_t length)
{
    std::size_t found = kNowhere;
    for (std::size_t offset = length % 256; offset + 256 <= length; offset += 256) {
        if (isMark(bytes[offset], bytes[offset + 1])) {
            found = offset;
        }
    }
    return found;
}

// The texts from a string area, each on top of its previous content.
std::array<std::string, 3> textsOf(std::string area, std::array<std::string, 3> texts)
{
    for (std::string& text : texts) {
        const std::size_t length = area.empty() ? 0 : static_cast<unsigned char>(area[0]);
        if (length < 2 || length > area.size()) {
            break;
        }
        text = area.substr(2, length - 2);
        text = text.substr(0, text.find('\0')); // the record's texts end at a NUL
        area.erase(0, length);
    }
    return texts;
}

std::array<std::string, 3> textsOf(const FwImage& image)
{
    return {textOf(image.manufacturer), textOf(image.product), textOf(image.serial)};
}

// Random bytes; each case uses a window of them, so that most of the time goes into parsing.
class RandomImages
{
public:
    static constexpr std::size_t kLongest = 70'000;

    explicit RandomImages(Random& random) : m_random(random), m_pool(2 * kLongest)
    {
        for (std::uint8_t& byte : m_pool) {
            byte = static_cast<std::uint8_t>(random());
        }
    }

    std::uint8_t* next(std::size_t length)
    {
        std::uint8_t* bytes = m_pool.data() + upTo(m_random, m_pool.size() - length);
        for (std::size_t marks = upTo(m_random, 2); marks > 0 && length >= 256; --marks) {
            plant(bytes + length % 256 + 256 * upTo(m_random, length / 256 - 1));
        }
        return bytes;
    }

private:
    void plant(std::uint8_t* block)
    {
        static constexpr std::uint8_t kAnyMark[][2] = {{0xAA, 0x55}, {0x3C, 0xC3}, {0x55, 0xAA}};
        std::memcpy(block, kAnyMark[upTo(m_random, 2)], 2);
        std::uint8_t* const area = block + 43;
        for (std::size_t at = 0; at < 35; at += std::max<std::size_t>(area[at], 1)) {
            area[at] = static_cast<std::uint8_t>(upTo(m_random, 14));
        }
    }

    Random& m_random;
    ByteList m_pool;
};

TEST(FwImageProperties, AnyBytesParseOrAreRefused)
{
    Random random(20240229);
    RandomImages images(random);
    FwImage image;
    int loaded = 0;
    for (int round = 0; round < 100'000; ++round) {
        const std::size_t length = upTo(random, round % 8 == 0 ? RandomImages::kLongest : 1'300);
        const std::uint8_t* bytes = images.next(length);
        const std::size_t block = length < 256 ? kNowhere : blockOf(bytes, length);
        const std::array<std::string, 3> before = textsOf(image);
        LastError = 0;
        const bool parsed = FwImage_Parse(image, bytes, static_cast<std::int32_t>(length));
        ASSERT_EQ(parsed, block != kNowhere) << "round " << round;
        ASSERT_EQ(image.loaded, parsed);
        ASSERT_EQ(LastError, length == 0 ? 6 : length < 256 ? 7 : 0);
        ASSERT_EQ(image.size, static_cast<std::int32_t>(length));
        ASSERT_TRUE(length == 0 || std::memcmp(image.data.get(), bytes, length) == 0);
        if (!parsed) {
            ASSERT_EQ(image.descriptor, nullptr);
            ASSERT_EQ(textsOf(image), before);
            continue;
        }
        ++loaded;
        ASSERT_EQ(image.descriptor, image.data.get() + block) << "round " << round;
        const auto* area = reinterpret_cast<const char*>(bytes + block + 43);
        ASSERT_EQ(textsOf(image), textsOf(std::string(area, 35), before)) << "round " << round;
    }
    EXPECT_GT(loaded, 10'000);
}

std::string randomText(Random& random, std::size_t longest, int lowest, int highest)
{
    std::string text(upTo(random, longest), '\0');
    for (char& c : text) {
        c = static_cast<char>(std::uniform_int_distribution<int>(lowest, highest)(random));
    }
    return text;
}

TEST(FwImageProperties, StringsComeBackFromAFreshParse)
{
    Random random(11);
    for (int round = 0; round < 100'000; ++round) {
        FwImage image;
        ASSERT_TRUE(parse(image, imageWithBlock(600, 88)));
        const std::array<std::string, 3> texts{randomText(random, 14, 1, 255),
                                               randomText(random, 14, 1, 255),
                                               randomText(random, 14, 1, 255)};
        const bool fits = texts[0].size() + texts[1].size() + texts[2].size() <= 29;
        ASSERT_EQ(FwImage_SetStrings(image, texts[0], texts[1], texts[2]), fits);
        FwImage fresh;
        ASSERT_TRUE(FwImage_Parse(fresh, image.data.get(), image.size));
        ASSERT_EQ(textsOf(fresh), fits ? texts : (std::array<std::string, 3>{}))
            << "round " << round;
        if (fits) {
            ASSERT_EQ(textsOf(image), texts);
        }
        ASSERT_EQ(textOf(fresh.containerIdText), "{00112233-4455-6677-8899-aabbccddeeff}");
    }
}

TEST(FwImageProperties, AContainerIdComesBackInLowerCase)
{
    Random random(7);
    for (int round = 0; round < 100'000; ++round) {
        FwImage image;
        ASSERT_TRUE(parse(image, imageWithBlock(256, 0)));
        std::string typed = "{";
        std::string wanted = "{";
        for (int digit = 0; digit < 32; ++digit) {
            const bool dash = digit == 8 || digit == 12 || digit == 16 || digit == 20;
            const std::size_t value = upTo(random, 15);
            typed += dash ? "-" : "";
            typed += (random() % 2 == 0 ? "0123456789abcdef" : "0123456789ABCDEF")[value];
            wanted += dash ? "-" : "";
            wanted += "0123456789abcdef"[value];
        }
        typed += '}';
        wanted += '}';
        ASSERT_TRUE(FwImage_SetContainerId(image, typed));
        ASSERT_EQ(textOf(image.containerIdText), typed);
        FwImage fresh;
        ASSERT_TRUE(FwImage_Parse(fresh, image.data.get(), image.size));
        ASSERT_EQ(textOf(fresh.containerIdText), wanted);
    }
}

TEST(FwImageProperties, AnyTextMakesAContainerIdAndNothingElse)
{
    Random random(3);
    const ByteList before = imageWithBlock(256, 0);
    for (int round = 0; round < 20'000; ++round) {
        FwImage image;
        ASSERT_TRUE(parse(image, before));
        const std::string text = randomText(random, 120, 1, 255);
        ASSERT_TRUE(FwImage_SetContainerId(image, text));
        ASSERT_EQ(textOf(image.containerIdText), text.substr(0, 63));
        ByteList after = bytesAt(image.data.get(), 256);
        std::copy_n(before.begin() + 78, 16, after.begin() + 78);
        ASSERT_EQ(after, before);
    }
}

} // namespace
} // namespace vornadel::test
