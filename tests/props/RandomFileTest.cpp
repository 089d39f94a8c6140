#include "tests/props/DefinitionFolder.h"

#include <gmock/gmock.h>
#include <iniparser/iniparser.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

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
            text += "[HubFF_USB_05]\nPropName = n\n"; // or most texts would hold no property
        } else {
            text += kPieces.at(random() % kPieces.size());
        }
    }
    return text;
}

int saysNothing(const char* /*format*/, ...) { return 0; }

/// The list as slow and plain as it can be read, straight from the library; `readable` tells whether it can be.
class PlainReading
{
public:
    explicit PlainReading(const std::string& path)
        : m_read(quietly(path), iniparser_freedict), m_readable(m_read != nullptr)
    {
        for (unsigned n = 0; n < 255 && m_readable; ++n) {
            readSection(n);
        }
    }

    bool readable() const { return m_readable; }
    const std::vector<PropItem>& items() const { return m_items; }

private:
    static dictionary* quietly(const std::string& path)
    {
        iniparser_set_error_callback(saysNothing);
        dictionary* read = iniparser_load(path.c_str());
        iniparser_set_error_callback(nullptr);
        return read;
    }

    std::string text(const char* format, unsigned n, const char* key)
    {
        std::array<char, 64> name{};
        std::snprintf(name.data(), name.size(), format, n, key);
        const char* found = iniparser_getstring(m_read.get(), name.data(), "");
        m_readable = m_readable && found != nullptr;
        return found != nullptr ? found : "";
    }

    std::string text(unsigned n, const char* key) { return text("HubFF_USB_%02X:%s", n, key); }

    std::string slotText(unsigned n, const char* kind, unsigned slot)
    {
        std::array<char, 32> key{};
        std::snprintf(key.data(), key.size(), "%s%02X", kind, slot);
        return text(n, key.data());
    }

    /// What is left of a number of any length in 32 bits.
    static std::uint32_t number(const std::string& text)
    {
        const std::size_t blanks = std::strspn(text.c_str(), " \t\n\v\f\r");
        const std::size_t sign = text[blanks] == '-' || text[blanks] == '+' ? 1 : 0;
        const std::size_t first = blanks + sign;
        const std::size_t count = std::strspn(text.c_str() + first, "0123456789");
        std::uint64_t rest = 0;
        for (const char digit : text.substr(first, count)) {
            rest = (rest * 10 + static_cast<std::uint64_t>(digit - '0')) % 0x1'0000'0000;
        }
        const bool negative = text[blanks] == '-';
        return static_cast<std::uint32_t>(negative ? 0x1'0000'0000 - rest : rest);
    }

    void readSection(unsigned n)
    {
        PropItem item;
        item.key = static_cast<std::uint8_t>(n);
        item.propName = item.property = text(n, "PropName");
        if (item.propName.empty()) {
            return;
        }
        item.pageName = text(n, "PageName");
        item.groupName = text(n, "GroupName");
        item.propDesc = text(n, "PropDesp");
        item.addr = number(text(n, "PropAddr"));
        item.baseOnAddr = number(text(n, "BaseOnAddr"));
        item.mask = static_cast<std::uint8_t>(number(text(n, "PropMask")));
        item.baseOnMask = static_cast<std::uint8_t>(number(text(n, "BaseOnMask")));
        for (unsigned slot = 0; slot < 16; ++slot) {
            const std::string label = slotText(n, "PropOption_", slot);
            const std::string data = slotText(n, "DataOption_", slot);
            if (!label.empty()) {
                item.propList.push_back(label);
                item.dataList.push_back(data.empty() ? std::to_string(slot) : data);
            }
        }
        item.curValue = item.dataList.empty() ? "Const Value" : item.dataList[0];
        m_items.push_back(item);
    }

    std::unique_ptr<dictionary, decltype(&iniparser_freedict)> m_read;
    bool m_readable;
    std::vector<PropItem> m_items;
};

auto fieldsOf(const PropItem& item)
{
    return std::tie(item.key, item.baseOnAddr, item.baseOnMask, item.addr, item.mask, item.pageName,
                    item.groupName, item.property, item.propName, item.propDesc, item.curValue,
                    item.curDataValue, item.curPropValue, item.propList, item.dataList);
}

class RandomFile : public DefinitionFolder
{
protected:
    /// False when the text was refused, on both sides.
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
    // both ways out were taken often
    EXPECT_GT(accepted, 200);
    EXPECT_LT(accepted, 3800);
}

} // namespace
} // namespace vornadel::test
