#pragma once

#include "props/PropItem.h"

#include <iniparser/iniparser.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace vornadel::test
{

inline int saysNothing(const char* /*format*/, ...) { return 0; }

/// A slow and simple reference implementation, straight from the library; sets `readable` to
/// whether the file can be read.
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

    /// The low 32 bits of a number of any length.
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

/// All fields, for comparison.
inline auto fieldsOf(const PropItem& item)
{
    return std::tie(item.key, item.baseOnAddr, item.baseOnMask, item.addr, item.mask, item.pageName,
                    item.groupName, item.property, item.propName, item.propDesc, item.curValue,
                    item.curDataValue, item.curPropValue, item.propList, item.dataList);
}

} // namespace vornadel::test
