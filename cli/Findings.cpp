#include "cli/Findings.h"

#include "cli/AskedHub.h"
#include "cli/HubChoices.h"
#include "cli/Json.h"
#include "cli/LogFile.h"
#include "cli/NextCommand.h"
#include "cli/Outcome.h"
#include "cli/ShownText.h"
#include "cli/Verbs.h"
#include "driver/AccessRule.h"
#include "hub/SupportedIds.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <utility>

namespace vornadel
{

namespace
{

using State = Finding::State;

constexpr struct {
    State state;
    const char* shown;
    const char* name; ///< in JSON
} kStates[] = {
    {State::Ok, "ok", "ok"}, {State::Warning, "warn", "warn"}, {State::Failure, "FAIL", "fail"}};

const auto& rowOf(State state)
{
    return *std::find_if(std::begin(kStates), std::end(kStates),
                         [&](const auto& row) { return row.state == state; });
}

/// "1 hub", "2 hubs"
std::string counted(std::size_t number, const std::string& what)
{
    return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
}

std::string idsText(const UsbIds& ids) { return hex4(ids.vendor) + ':' + hex4(ids.product); }

/// Who has locked the hub.
Finding busyFinding(const HubChoice& choice, const std::string& check)
{
    const std::int64_t process = choice.owner->processId;
    return {State::Warning, check, busySentence(process),
            process == 0 ? "" : "ps -o pid,user,etime,args -p " + std::to_string(process)};
}

Finding accessFinding(const Command& command, const HubChoice& choice, const std::string& check)
{
    const UsbPlace place = choice.hub.place();
    const AskedHub asked = askHub(place);
    if (asked.failure == HubFailure::None) {
        return {State::Ok, check, "can be opened; " + asked.code() + ' ' + asked.version()};
    }
    const Failure failure =
        outcomeOf(asked.failure, {.place = place.text(),
                                  .owner = ownerOf(command.platform.usb, place),
                                  .grantAccess = accessCommand(command.resourcePath)});
    const bool mayNot = asked.failure == HubFailure::NoAccess;
    return {State::Failure, check, failure.what, mayNot ? failure.next : "plug the hub in again",
            kindOf(failure.id).status};
}

/// A USB 3 hub with one half only is slow, or at a bad cable.
std::optional<Finding> halvesFinding(const AttachedHub& hub, const std::string& check)
{
    if (hub.superSpeedId != 0 && hub.highSpeedId != 0) {
        return {};
    }
    return Finding{State::Warning, check,
                   std::string("only its ") +
                       (hub.superSpeedId != 0 ? "SuperSpeed" : "high-speed") + " half is attached",
                   "use a USB 3 port and cable, or give config.ini both product ids"};
}

} // namespace

Findings configurationFindings(const Command& command)
{
    const auto hubs = static_cast<std::size_t>(
        std::count_if(SupportedIdList.begin(), SupportedIdList.end(),
                      [](const SupportedIdEntry& entry) { return entry.valid == 1; }));
    const std::string check = "configuration";
    const std::string file = command.configFile + " (" + command.configReason + ')';
    if (!command.config.problem.empty()) {
        return {{State::Failure, check, command.config.problem,
                 "write this file, or name another one with --config", kExitUsage}};
    }
    if (hubs == 0) {
        return {{State::Failure, check, file + " names no hub",
                 "add VID_00, SSPID_00 and HSPID_00 to its section [Support Vid Pid]", kExitUsage}};
    }
    return {{State::Ok, check, file + " names " + counted(hubs, "hub")}};
}

Findings usbFindings(const Command& command)
{
    const std::unique_ptr<UsbSearch> search = command.platform.usb.search();
    std::size_t devices = 0;
    if (search) {
        std::unique_ptr<UsbDevice> device;
        for (auto step = search->next(device); step != UsbSearch::Step::End;
             step = search->next(device)) {
            devices += step == UsbSearch::Step::Device ? 1 : 0;
        }
        search->release();
    }
    if (devices == 0) {
        return {{State::Failure, "USB", "the system lists no USB device, not even a root hub",
                 "lsusb", kExitNoHub}};
    }
    return {{State::Ok, "USB", counted(devices, "device")}};
}

Findings hubFindings(const Command& command)
{
    const auto hubs = findHubChoices(command.platform.usb);
    if (!hubs || hubs->empty()) {
        return {{State::Failure, "hubs", "no supported hub is attached", "vornadelctl list --all",
                 kExitNoHub}};
    }
    Findings findings;
    for (const HubChoice& choice : *hubs) {
        const std::string check = "hub " + choice.place();
        if (choice.owner) {
            findings.push_back(busyFinding(choice, check));
        } else if (choice.hub.place().known() || hubs->size() == 1) {
            findings.push_back(accessFinding(command, choice, check));
        } else { // another hub might answer
            findings.push_back({State::Warning, check, "the system does not tell where it is",
                                "attach one hub at a time"});
        }
        if (!choice.isAway()) {
            if (const auto finding = halvesFinding(choice.hub, check)) {
                findings.push_back(*finding);
            }
        }
    }
    return findings;
}

Findings ruleFindings(const Command& command)
{
    if (!hasAccessRule(command.resourcePath)) {
        return {};
    }
    const std::string check = "access rule";
    const std::string& path = command.env.accessRule;
    const std::string ownConfig = command.resourcePath + "/config.ini";
    std::error_code ignored;
    const std::string grant =
        std::filesystem::equivalent(command.configFile, ownConfig, ignored)
            ? accessCommand(command.resourcePath)
            : "name the hubs in " + ownConfig + ", then: " + accessCommand(command.resourcePath);
    const std::optional<std::vector<UsbIds>> rule = idsOfAccessRule(path);
    if (!rule) {
        return {{State::Warning, check, path + " is not installed, so only root may open a hub",
                 grant}};
    }
    const std::vector<UsbIds> missing = idsMissingIn(*rule);
    if (missing.empty()) {
        return {{State::Ok, check, path + " names every hub of the configuration"}};
    }
    std::string text = path + " does not name";
    for (const UsbIds& ids : missing) {
        text += ' ' + idsText(ids);
    }
    return {{State::Warning, check, text, grant}};
}

Findings logFindings(const Command& command)
{
    const std::string& path = command.log.path;
    if (path.empty()) {
        const std::string usual = usualLogFile(command.env);
        return {usual.empty()
                    ? Finding{State::Warning, "log", "there is none", "set XDG_STATE_HOME or HOME"}
                    : Finding{State::Warning, "log", usual + " cannot be written",
                              "ls -ld " + shellWord(usual)}};
    }
    std::ifstream file(path);
    std::string last; // the end of an earlier run; this one has not ended yet
    for (std::string line; std::getline(file, line);) {
        last = line.find("] ended with ") == std::string::npos ? last : line;
    }
    if (last.empty()) {
        return {{State::Ok, "log", path + " tells of no earlier run"}};
    }
    const bool isWell = last.ends_with("] ended with 0");
    return {{State::Ok, "log", path + ": " + printable(last),
             isWell ? "" : "tail -n 20 " + shellWord(path)}};
}

int tellFindings(const Command& command, const Findings& findings)
{
    int status = kExitSuccess;
    Json list = Json::array();
    for (const Finding& finding : findings) {
        if (finding.state == State::Failure && status == kExitSuccess) {
            status = finding.status;
        }
        if (command.json()) {
            list.push_back({{"state", rowOf(finding.state).name},
                            {"check", finding.check},
                            {"text", finding.text},
                            {"do", finding.remedy.empty() ? Json() : Json(finding.remedy)}});
            continue;
        }
        std::string shown = rowOf(finding.state).shown;
        shown.resize(6, ' ');
        command.out << shown << finding.check << ": " << finding.text << '\n';
        if (!finding.remedy.empty()) {
            command.out << "      do: " << finding.remedy << '\n';
        }
    }
    if (command.json()) {
        printObject(command, {{"v", 1}, {"exit", status}, {"findings", std::move(list)}});
    }
    return status;
}

} // namespace vornadel
