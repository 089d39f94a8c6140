// Reads property files. An input is the file.

#include "props/Pages.h"
#include "props/PropertyFile.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/props/PlainReading.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace vornadel::test
{

namespace
{

void requireWellFormed(const PropItemList& items)
{
    int before = -1;
    for (const auto& item : items) {
        require(item->key > before && item->key != 0xFF,
                "items come in the order of their numbers, up to 254");
        before = item->key;
        require(!item->propName.empty() && item->propName == item->property,
                "every item has its name");
        require(item->propList.size() == item->dataList.size() && item->propList.size() <= 16,
                "labels have their values");
        require(item->curValue ==
                    (item->dataList.empty() ? std::string(kConstValue) : item->dataList.front()),
                "the first value is the current one");
        const auto pages = std::count(kPropertyPages.begin(), kPropertyPages.end(), item->pageName);
        require(pages == 0 || pages == 1, "an item is on one page at most");
    }
}

void requireEqual(const PropItemList& items, const std::vector<PropItem>& expected)
{
    require(items.size() == expected.size(), "the plain reading finds as many items");
    for (std::size_t i = 0; i < items.size(); ++i) {
        require(fieldsOf(*items[i]) == fieldsOf(expected[i]), "the plain reading finds the same");
    }
}

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel;
    using namespace vornadel::test;
    static const MemoryFile file;
    file.write({data, size});

    std::string problem;
    const PropItemList items = readPropertyFile(file.path(), problem);
    require(problem.find('\n') == std::string::npos, "a problem is one line");
    require(problem.empty() || items.empty(), "a file with a problem gives no items");
    const PlainReading plain(file.path());
    const std::uint8_t* const nul = std::find(data, data + size, 0);
    const bool text = std::all_of(nul, data + size, [](std::uint8_t byte) { return byte == 0; });
    const bool mayBeTooLong = size > kMostPropertyLines; // every line has at least one byte
    require(problem.empty() == (text && plain.readable()) || mayBeTooLong,
            "what a plain reading can read is read, and nothing else");
    if (!problem.empty()) {
        return 0;
    }
    requireWellFormed(items);
    requireEqual(items, plain.items());
    return 0;
}
