// Every fault of every flow, started by a button of the window: the last lines are the right ones
// to the letter, the buttons are enabled again, the hub is closed, and the next press succeeds.
//
// The window does not look for hubs by itself, so that every request is the flow's.

#include "tests/app/ToolUnderTest.h"

#include "hub/HubTransport.h"
#include "tests/flows/FaultyRun.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <mutex>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;

struct Action {
    const Flow& flow;
    QPushButton* AppDelegate::*button;
    QPushButton* AppDelegate::*select; ///< an image for it
};

const std::array<Action, 4>& actions()
{
    static const std::array<Action, 4> all = {{
        {easyUpdate(), &AppDelegate::btnUpdate_EasyUpdate, &AppDelegate::btnSelect_EasyUpdate},
        {flashRead(), &AppDelegate::btnRead_FwFlash, nullptr},
        {flashErase(), &AppDelegate::btnErase_FwFlash, nullptr},
        {driverUnload(), &AppDelegate::nsbtnUnloadDriver_HelpBox, nullptr},
    }};
    return all;
}

struct ActionRow {
    const Action* action;
    FaultVariant variant;
};

void PrintTo(const ActionRow& row, std::ostream* stream)
{
    *stream << row.action->flow.name << row.variant.name;
}

std::vector<ActionRow> everyRow()
{
    std::vector<ActionRow> rows;
    for (const Action& action : actions()) {
        for (const FaultVariant& variant : kFaultVariants) {
            if (!placesOf(variant, action.flow.wireFrom(HubCode::Flash)).empty()) {
                rows.push_back({&action, variant});
            }
        }
    }
    return rows;
}

class EveryFault : public ToolUnderTest, public testing::WithParamInterface<ActionRow>
{
protected:
    void SetUp() override
    {
        hubOptions.latency = SimulatedLatency::None;
        launchAndSettle();
        if (QPushButton* AppDelegate::*const select = GetParam().action->select) {
            chooseByTyping(tool().*select,
                           QString::fromStdString(writeFile("demo.bin", newFlash())));
        }
        hub().notifier().unwatch();
        // Each detection so far sent two requests: open-time and status.
        m_opensBefore = hub().requestCount() / 2;
        hub().onRequest = [this](const ControlRequest& request) {
            const std::lock_guard lock(m_mutex);
            m_wire += observedLetter(request);
        };
    }

    void sweep(HubCode runs)
    {
        const auto& [action, variant] = GetParam();
        const std::string wire = action->flow.wireFrom(runs);
        const std::vector<std::size_t> places = placesOf(variant, wire);
        EXPECT_FALSE(places.empty());
        for (const std::size_t index : places) {
            SCOPED_TRACE(index);
            prepare(runs);
            const unsigned before = hub().faultsTriggered();
            hub().addFault(variant.at(base() + positionOf(variant.kind, wire, index)));
            pressAndExpect(*action, outcomeOf(action->flow, runs, variant, index));
            EXPECT_EQ(hub().faultsTriggered(), before + 1);
            recover(wire[index]);
            pressAndExpect(*action, {action->flow.wireFrom(hub().runningCode()), std::nullopt});
            settle('\0');
            if (HasFailure()) {
                break;
            }
        }
    }

private:
    /// The hub with its old firmware, plugged in with this code.
    void prepare(HubCode runs)
    {
        EXPECT_TRUE(hub().setFlash(oldFlash()));
        hub().unplug();
        hub().replug(runs);
    }

    /// The hub's count so far of the events that the fault can strike.
    unsigned base()
    {
        switch (strikes(GetParam().variant.kind)) {
        case Strikes::Open:
            return m_opensBefore;
        case Strikes::Restart:
            return m_restartsBefore;
        case Strikes::Request:
            break;
        }
        return hub().requestCount();
    }

    /// Counts the results of the last press.
    void settle(char struck)
    {
        const FaultKind kind = GetParam().variant.kind;
        const std::lock_guard lock(m_mutex);
        for (const char request : m_wire) {
            m_opensBefore += request == 'h' ? 1 : 0;
            m_restartsBefore += request == 'm' || request == 'f' ? 1 : 0;
        }
        const bool undone = kind == FaultKind::Stall || kind == FaultKind::VanishBefore ||
                            kind == FaultKind::Ignore;
        m_restartsBefore -= undone && (struck == 'm' || struck == 'f') ? 1 : 0;
        m_wire.clear();
    }

    /// Powers the hub up again, without faults.
    void recover(char struck)
    {
        hub().replug();
        clock().advance(60s);
        const FaultVariant& variant = GetParam().variant;
        if (variant.kind == FaultKind::OpenRefused) {
            for (unsigned refused = 0; refused < variant.amount && !Hub_OpenDevice(); ++refused) {
            }
            Hub_CloseDevice();
            m_opensBefore += variant.amount;
        }
        settle(struck);
    }

    void pressAndExpect(const Action& action, const Outcome& outcome)
    {
        tool().resetProgressInfo();
        QPushButton* const button = tool().*action.button;
        EXPECT_TRUE(button->isEnabled());
        const Clock::Duration begun = clock().now();
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        settleEvents();
        EXPECT_TRUE(allSwitched(true));
        EXPECT_FALSE(Hub_IsOpen());
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(m_wire, asObserved(outcome.wire));
        EXPECT_LE(clock().now() - begun, longestFor(m_wire));
        expectShown(action.flow, outcome.fails);
    }

    void expectShown(const Flow& flow, std::optional<Step> fails)
    {
        if (flow.steps.empty()) {
            EXPECT_EQ(progressText(), "");
            return;
        }
        EXPECT_TRUE(progressText().ends_with(
            fails ? flow.reasons.at(*fails) + std::string(flow.failure) : flow.success))
            << progressText();
        EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), fails ? kRedHue : kBlueHue);
        if (!fails && flow.writes()) {
            EXPECT_TRUE(hub().flash() == newFlash());
        }
    }

    unsigned m_opensBefore = 0;
    unsigned m_restartsBefore = 0;
    std::mutex m_mutex; // guards what follows
    std::string m_wire;
};

} // namespace

TEST_P(EveryFault, IsShownTrulyAndTheNextPressSucceeds)
{
    sweep(HubCode::Flash);
    sweep(HubCode::Rom);
}

INSTANTIATE_TEST_SUITE_P(OfEveryButton, EveryFault, testing::ValuesIn(everyRow()),
                         [](const auto& row) {
                             return std::string(row.param.action->flow.name) +
                                    row.param.variant.name;
                         });

} // namespace vornadel::test
