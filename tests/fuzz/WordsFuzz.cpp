// The words of vornadelctl's command line that have a form of their own: NAME=VALUE, and the
// selectors of a hub. An input is one word for each of them.

#include "cli/HubSelector.h"
#include "cli/ImageEdit.h"
#include "props/PropertyChoice.h"
#include "props/PropertyEdit.h"
#include "standins/sim/DemoImage.h"
#include "tests/fuzz/FuzzInput.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

std::shared_ptr<PropItem> property(const char* page, const char* name,
                                   std::vector<std::string> labels)
{
    auto item = std::make_shared<PropItem>();
    item->key = 1;
    item->pageName = page;
    item->propName = name;
    item->addr = 100;
    item->mask = 7;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        item->dataList.push_back(std::to_string(i));
    }
    item->propList = std::move(labels);
    return item;
}

const PropItemList& properties()
{
    static const PropItemList items = {
        property("SSC", "a", {"x", "1", "a=b"}),   property("SSC", "a=b", {"=", "x"}),
        property("System", "twice", {"x"}),        property("SSC", "twice", {"x"}),
        property("SSC", "same", {"x", "x", "0"}),  property("SSC", "constant", {}),
        property("Nowhere", "hidden", {"x", "y"}),
    };
    return items;
}

bool isOneLine(const std::string& text)
{
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void requireField(const FieldEdit& edit)
{
    require(findFlaw(edit) == FieldFlaw::None, "an accepted text fits its field");
    FwImage image;
    static const std::vector<std::uint8_t> bytes = demoImage();
    require(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())),
            "there is an image");
    const std::span<const FieldEdit> edits(&edit, 1);
    std::size_t culprit = 0;
    if (FwImage_FindEditFlaw(image, edits, culprit) != FieldFlaw::None) {
        return;
    }
    FwImage_EditFields(image, edits);
    FwImage_RebuildStrings(image);
    FwImage again;
    FwImage_Parse(again, image.data.get(), image.size);
    std::string wanted = edit.text;
    if (edit.field <= IdentityField::Hspid || edit.field == IdentityField::ContainerId) {
        std::transform(wanted.begin(), wanted.end(), wanted.begin(), [&edit](unsigned char c) {
            return static_cast<char>(edit.field <= IdentityField::Hspid ? std::toupper(c)
                                                                        : std::tolower(c));
        });
    }
    if (edit.field == IdentityField::ContainerId && wanted.front() != '{') {
        wanted = '{' + wanted + '}';
    }
    require(FwImage_FieldText(again, edit.field) == wanted, "the image holds what was set");
}

void requireProperty(const ImageEdit& edit)
{
    const PropItem& item = *edit.property;
    require(flawOf(item) == PropertyFlaw::None && edit.position < item.propList.size(),
            "an accepted property can be set to that option");
    ImageEdit again;
    const std::string word = fullName(item) + '=' + optionText(item, edit.position);
    require(parseEdit(word, properties(), again).empty() && again.sameTarget(edit) &&
                again.position == edit.position,
            "its full name and the whole text of the option mean the same");
}

void requireEdit(const std::string& word)
{
    ImageEdit edit;
    const std::string why = parseEdit(word, properties(), edit);
    if (!why.empty()) {
        require(isOneLine(why), "a reason is one line, and nothing that a terminal obeys");
    } else if (edit.property != nullptr) {
        requireProperty(edit);
    } else {
        require(namesAField(word), "a field needs no property file");
        requireField(edit.field);
    }
}

void requireSelectors(const std::string& word)
{
    if (isPath(word)) {
        require(isOneLine(word) && word.find('-') != std::string::npos, "a place is plain text");
    }
    const std::string id = containerIdIn(word);
    require(id.empty() || (id.size() == 38 && containerIdIn(id) == id),
            "a Container ID is kept in its one form");
    const bool setAsContainerId = findFlaw({IdentityField::ContainerId, word}) == FieldFlaw::None;
    require(setAsContainerId == !id.empty(), "a Container ID is one to select and to set");
    if (const auto ids = idsIn(word)) {
        char text[16];
        std::snprintf(text, sizeof text, "%x:%x", ids->vendor, ids->product);
        const auto again = idsIn(text);
        require(again && again->vendor == ids->vendor && again->product == ids->product,
                "ids are numbers");
    }
}

} // namespace

} // namespace vornadel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vornadel::test;
    // Like a word of a command line, it ends at the first NUL.
    const std::string word(data, std::find(data, data + size, std::uint8_t{0}));
    requireEdit(word);
    requireSelectors(word);
    return 0;
}
