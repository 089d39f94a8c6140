// "vornadelctl image set" and the window write the same bytes, for random images, property files
// and edits. RC_PARAMS repeats a failure; the failure says how.

#include "cli/Verbs.h"
#include "editor/ImageText.h"
#include "firmware/FwImage.h"
#include "props/Pages.h"
#include "tests/app/FlashPageUnderTest.h"

#include <QFileDialog>
#include <QMessageBox>
#include <rapidcheck.h>

#include <cstdlib>
#include <optional>
#include <sstream>

namespace vornadel::test
{

namespace
{

using Bytes = std::vector<std::uint8_t>;
using rc::gen::element;
using rc::gen::inRange;

constexpr int kCases = 560;
constexpr int kAtLeast = 20'000; // edits

/// A text of at most nine bytes, so that three of them always fit: in UTF-8 or, as an image may
/// have it, with other bytes, too.
std::string anyText(bool utf8)
{
    const std::vector<std::string> pieces = {"a",
                                             "Z",
                                             "7",
                                             " ",
                                             "\"",
                                             "\xC3\xBC",
                                             "\xC3\xBF",
                                             "\xE2\x82\xAC",
                                             utf8 ? "-" : "\xE9",
                                             utf8 ? "_" : "\xFF",
                                             "\xF0\x9F\x98\x80"};
    std::string text;
    for (int count = *inRange(0, 7); count > 0; --count) {
        const std::string piece = *rc::gen::elementOf(pieces);
        text += text.size() + piece.size() <= 9 ? piece : "";
    }
    return text;
}

std::string anyHex(std::size_t digits)
{
    std::string text;
    while (text.size() < digits) {
        text += *rc::gen::elementOf(std::string("0123456789abcdefABCDEF"));
    }
    return text;
}

std::string anyContainerId()
{
    const std::string id =
        anyHex(8) + '-' + anyHex(4) + '-' + anyHex(4) + '-' + anyHex(4) + '-' + anyHex(12);
    return *rc::gen::arbitrary<bool>() ? id : '{' + id + '}';
}

/// With the ids of the hub, so that the window finds it again.
Bytes anyImage(std::size_t& at)
{
    Bytes image = demoImage();
    at = *inRange<std::size_t>(1, 128) * 256;
    const auto block = image.begin() + static_cast<std::ptrdiff_t>(at);
    std::copy_n(image.begin() + kDemoBlock, 8, block);
    std::fill_n(image.begin() + kDemoBlock + 256, 256, std::uint8_t{0});
    if (block < image.begin() + kDemoBlock) {
        image[kDemoBlock] = 0; // the last block counts
    }
    const Bytes configuration = *rc::gen::container<Bytes>(248, rc::gen::arbitrary<std::uint8_t>());
    std::copy(configuration.begin(), configuration.end(), block + 8);
    if (*inRange(0, 4) > 0) { // otherwise the strings are random bytes
        auto string = block + 43;
        for (int strings = *inRange(0, 4); strings > 0; --strings) {
            const std::string text = anyText(false);
            *string++ = static_cast<std::uint8_t>(text.size() + 2);
            *string++ = *rc::gen::arbitrary<std::uint8_t>(); // the type
            string = std::copy(text.begin(), text.end(), string);
        }
        *string = 0;
    } else {
        block[43] = *element<std::uint8_t>(0, 1, 2, 12, 36, 255);
        block[45 + 10] = 0; // not more than 29 characters
    }
    return image;
}

struct Property {
    std::string page;
    std::string name;
    int options;
    unsigned addr;
    unsigned mask;
};

/// A property file, and what is in it. Some bits unlock others, and some lie in the identity.
std::vector<Property> anyProperties(std::string& file)
{
    std::vector<Property> properties;
    file.clear();
    for (int number = 1; number <= 60; ++number) {
        const Property property = {std::string(*rc::gen::elementOf(kPropertyPages)),
                                   "P" + std::to_string(number), *inRange(0, 5),
                                   *inRange(0, 12) > 0 ? *inRange(8U, 256U) : *inRange(0U, 600U),
                                   *element(1U, 2U, 6U, 48U, 128U, 255U, 160U, 0U)};
        file += "[HubFF_USB_" + QString::asprintf("%02X", number).toStdString() + "]\nPageName=\"" +
                property.page + "\"\nPropName=" + property.name +
                "\nPropAddr=" + std::to_string(property.addr) +
                "\nPropMask=" + std::to_string(property.mask) + '\n';
        if (!properties.empty() && *inRange(0, 3) == 0) {
            const Property& enabling = *rc::gen::elementOf(properties);
            file += "BaseOnAddr=" + std::to_string(enabling.addr) +
                    "\nBaseOnMask=" + std::to_string(enabling.mask) + '\n';
        }
        const int gap = *inRange(0, 3);
        for (int slot = 0; slot < property.options; ++slot) {
            file +=
                "PropOption_0" + std::to_string(slot + gap) + "=L" + std::to_string(slot) + '\n';
        }
        properties.push_back(property);
    }
    return properties;
}

/// Drops the window's console, which would be long.
class Quiet
{
public:
    Quiet()
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~Quiet()
    {
        testing::internal::GetCapturedStderr();
        testing::internal::GetCapturedStdout();
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
};

class ImageSet : public FlashPageUnderTest
{
protected:
    void SetUp() override
    {
        FlashPageUnderTest::SetUp();
        qApp->installEventFilter(&m_alerts);
        tool().window()->hide(); // painting would take most of the time
    }

    /// Types a whole text over what a field shows.
    void put(QLineEdit* field, const std::string& text)
    {
        field->selectAll();
        if (text.empty() && field->text().isEmpty()) {
            tool().controlTextDidChange(field); // no key would tell of this
        } else if (text.empty()) {
            field->del();
        } else {
            field->insert(QString::fromStdString(text));
        }
    }

    /// Whether the three strings fit into an image if this field gets this text.
    bool fits(const QLineEdit* changed, const std::string& text)
    {
        std::size_t size = 0;
        for (const QLineEdit* const field :
             {tool().txtManu_FwFlash, tool().txtPro_FwFlash, tool().txtSN_FwFlash}) {
            size += field == changed ? text.size() : imageText(*field).size();
        }
        return size <= kMostCharacters;
    }

    /// Chooses an option in the table of the window. Returns the alert that refuses it.
    std::optional<QString> choose(const Property& property, int position)
    {
        tool().cbPages->setCurrentText(QString::fromStdString(property.page));
        QAbstractItemModel& table = *tool().tbProperties_Detail->model();
        const QModelIndexList rows =
            table.match(table.index(0, 0), Qt::DisplayRole, QString::fromStdString(property.name),
                        1, Qt::MatchExactly);
        m_alerts.text.reset();
        table.setData(table.index(rows.value(0).row(), 1), position, Qt::EditRole);
        return m_alerts.text;
    }

    /// What the window saves.
    Bytes saved()
    {
        // The fields then show the image again, as after any change of the page.
        tool().selectFirstPage();
        m_alerts.text.reset();
        tool().save_FwFlash();
        RC_ASSERT(!m_alerts.text);
        auto* const panel = tool().window()->findChild<QFileDialog*>();
        const std::string path = directory() + "/window.bin";
        emit panel->fileSelected(QString::fromStdString(path));
        delete panel;
        return bytesOf(path);
    }

    /// Runs "image set" on the image. Returns its exit status.
    int set(const std::vector<std::string>& words)
    {
        CommandLine line;
        line.verb = verbCalled("image set");
        line.image = directory() + "/in.bin";
        line.output = directory() + "/out.bin";
        line.definitions = directory() + "/demo.INI";
        line.force = true;
        line.words = words;
        errors.str({});
        std::ostringstream out;
        const Environment env;
        StopRequest stop;
        const Log log;
        CommandResult result;
        const ToolConfig configuration;
        const std::string none;
        return line.verb->run({line, tool().platform(), none, none, configuration, out, out, errors,
                               env, stop, log, nullptr, result});
    }

    std::vector<std::string> setAnyFields()
    {
        const std::pair<const char*, QLineEdit*> fields[] = {
            {"vid", tool().txtVID_FwFlash},
            {"sspid", tool().txtSSPID_FwFlash},
            {"hspid", tool().txtHSPID_FwFlash},
            {"manufacturer", tool().txtManu_FwFlash},
            {"product", tool().txtPro_FwFlash},
            {"serial", tool().txtSN_FwFlash},
            {"container-id", tool().txtContainerID_FwFlash}};
        std::vector<std::string> words;
        for (const auto& [name, field] : fields) {
            if (*inRange(0, 3) == 0) {
                continue;
            }
            const std::string text = field == tool().txtContainerID_FwFlash ? anyContainerId()
                                     : words.size() < 3 && std::string(name).ends_with("id")
                                         ? anyHex(4)
                                         : anyText(true);
            if (!fits(field, text)) {
                continue; // the window would cut it
            }
            put(field, text);
            words.push_back(std::string(name) + '=' + text);
            ++edits;
        }
        return words;
    }

    void compareOnce()
    {
        const Quiet quiet;
        std::size_t block = 0;
        const Bytes image = anyImage(block);
        std::string file;
        const std::vector<Property> properties = anyProperties(file);
        writeFile("demo.INI", {file.begin(), file.end()});
        writeFile("in.bin", image);
        RC_ASSERT(hub().setFlash(image));
        // A field without a string in the image keeps its text; "image set" starts without any.
        for (QLineEdit* const field :
             {tool().txtManu_FwFlash, tool().txtPro_FwFlash, tool().txtSN_FwFlash}) {
            put(field, "");
        }
        tool().read_FwFlash();
        RC_ASSERT(waitUntilEnabled());

        std::vector<std::string> words = setAnyFields();
        for (const Property& property : properties) {
            if (property.options == 0) {
                continue;
            }
            const int position = *inRange(0, property.options);
            std::vector<std::string> more = words;
            more.push_back(property.name + "=L" + std::to_string(position));
            const std::optional<QString> refused = choose(property, position);
            ++edits;
            const bool hasBits = property.mask != 0 && property.addr < image.size() - block;
            if (hasBits && !refused) {
                words = std::move(more);
            } else if (hasBits) {
                RC_ASSERT(set(more) == kExitImageRefused);
                RC_ASSERT(errors.str().starts_with(
                    '"' + property.name + "\" is locked: " + refused->simplified().toStdString() +
                    " [locked]\n"));
            } else {
                RC_ASSERT(set(more) != kExitSuccess);
            }
        }
        const int status = set(words);
        RC_LOG() << errors.str();
        RC_ASSERT(status == kExitSuccess);
        const Bytes window = saved();
        const Bytes command = bytesOf(directory() + "/out.bin");
        RC_ASSERT(command.size() == window.size());
        for (std::size_t at = 0; at < window.size(); ++at) {
            if (command[at] != window[at]) {
                RC_FAIL("they differ at " +
                        std::to_string(static_cast<std::ptrdiff_t>(at - block)) + " in the block");
            }
        }
    }

    class Alerts final : public QObject
    {
    public:
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            auto* const box = qobject_cast<QMessageBox*>(watched);
            if (box != nullptr && event->type() == QEvent::Show) {
                text = box->text();
                QMetaObject::invokeMethod(box, "accept", Qt::QueuedConnection);
            }
            return false;
        }
        std::optional<QString> text;
    };

    std::ostringstream errors;
    int edits = 0;
    Alerts m_alerts;
};

TEST_F(ImageSet, WritesWhatTheWindowWrites)
{
    setenv("RC_PARAMS", ("max_success=" + std::to_string(kCases)).c_str(), 0);
    EXPECT_TRUE(
        rc::check("image set and the window write the same bytes", [this] { compareOnce(); }));
    EXPECT_GE(edits, kAtLeast);
}

} // namespace

} // namespace vornadel::test
