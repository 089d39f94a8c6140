#include "tests/props/DefinitionFolder.h"
#include "tests/props/PlainReading.h"

#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <random>
#include <string>

namespace vornadel::test
{
namespace
{

constexpr auto kPieces = std::to_array<const char*>({"[HubFF_USB_",
                                                     "00]",
                                                     "05]\n",
                                                     "FE]\n",
                                                     "FF]\n",
                                                     "0a]\n",
                                                     "[hubff_usb_05]\n",
                                                     "[HubFF_USB_05:PropName]\n",
                                                     "\nPropName = ",
                                                     "\nPropName = Name\n",
                                                     "\nPropName=",
                                                     "\nPageName = SSC",
                                                     "\nPropAddr = ",
                                                     "\nPropMask = 300",
                                                     "\nBaseOnAddr = -7",
                                                     "\nBaseOnMask = 1",
                                                     "\nPropDesp = \"",
                                                     "\nPropOption_00 = Off",
                                                     "\nPropOption_02 = On",
                                                     "\nDataOption_02 = 7",
                                                     "\nPropOption_0F = ",
                                                     "\nDataOption_0F=",
                                                     "[",
                                                     "]",
                                                     "=",
                                                     "\"",
                                                     "'",
                                                     ";",
                                                     "#",
                                                     "\\\n",
                                                     "\n",
                                                     "\r\n",
                                                     "\t",
                                                     " ",
                                                     ":",
                                                     "0x20",
                                                     "99999999999999999999",
                                                     "-",
                                                     "+",
                                                     "\xC3\xBC",
                                                     "\xFF",
                                                     "\x01",
                                                     "%s%n",
                                                     "[]\n"});

std::string randomText(std::mt19937& random)
{
    std::string text;
    for (auto pieces = random() % 60; pieces > 0; --pieces) {
        const auto kind = random() % 400;
        if (kind == 0) {
            text += '\0';
        } else if (kind == 1) {
            text.append(900 + random() % 300, 'x');
        } else if (kind < 12) {
            text += static_cast<char>(random());
        } else if (kind < 160) {
            text += "[HubFF_USB_05]\nPropName = n\n"; // otherwise most texts would hold no property
        } else {
            text += kPieces.at(random() % kPieces.size());
        }
    }
    return text;
}

class RandomFile : public DefinitionFolder
{
protected:
    /// False if both sides refused the text.
    bool expectTheSame(const std::string& text)
    {
        write(text);
        const PropItemList items = readPropertyFile(path(), problem);
        const PlainReading plain(path());
        const bool accepted = problem.empty();
        EXPECT_EQ(accepted, plain.readable() && text.find('\0') == std::string::npos) << problem;
        if (!accepted) {
            EXPECT_TRUE(items.empty());
            return false;
        }
        EXPECT_EQ(items.size(), plain.items().size());
        for (std::size_t i = 0; i < items.size() && i < plain.items().size(); ++i) {
            EXPECT_EQ(fieldsOf(*items[i]), fieldsOf(plain.items()[i]));
        }
        return true;
    }
};

TEST_F(RandomFile, IsReadAsThePlainReadingReadsItOrRefused)
{
    ::testing::internal::CaptureStderr();
    int accepted = 0;
    constexpr unsigned kFiles = 4000;
    for (unsigned seed = 0; seed < kFiles && !HasFailure(); ++seed) {
        std::mt19937 random(seed);
        const std::string text = randomText(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ":\n" + text);
        accepted += expectTheSame(text) ? 1 : 0;
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    // Both results occurred often.
    EXPECT_GT(accepted, 200);
    EXPECT_LT(accepted, 3800);
}

} // namespace
} // namespace vornadel::test
