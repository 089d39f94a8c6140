#pragma once

#include <cstdio>
#include <string>

namespace vornadel::test
{

/// The largest possible property file: 255 properties on one page, each with all its 40 keys.
inline std::string fullPropertyFile(const std::string& page)
{
    std::string text;
    for (unsigned number = 0; number < 0xFF; ++number) {
        char line[128];
        std::snprintf(line, sizeof line, "[HubFF_USB_%02X]\nPropName = Property %u\n", number,
                      number);
        text += line;
        text += "PageName = " + page +
                "\nGroupName = Group\nPropDesp = \"What the property is for, in a few words.\"\n"
                "PropAddr = 11\nPropMask = 1\nBaseOnAddr = 12\nBaseOnMask = 16\n";
        for (unsigned slot = 0; slot < 16; ++slot) {
            std::snprintf(line, sizeof line, "PropOption_%02X = Label %u\nDataOption_%02X = %u\n",
                          slot, slot, slot, slot);
            text += line;
        }
    }
    return text;
}

/// A file with that many different keys that no property has.
inline std::string distinctKeys(std::size_t count)
{
    std::string text = "[x]\n";
    for (std::size_t i = 1; i < count; ++i) {
        text += std::to_string(i) + "=\n";
    }
    return text;
}

} // namespace vornadel::test
