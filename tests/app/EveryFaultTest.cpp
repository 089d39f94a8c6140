// Every fault of every flow, started by a button of the window: what the window shows is told to
// the letter, its buttons are enabled again, the hub is closed, and the next press succeeds. The
// window does not look at the hub by itself here, so that every request is the flow's;
// FaultSweepTest.cpp is the one where it does.

#include "tests/app/ToolUnderTest.h"

#include "flows/ScalarUpdate.h"
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

const std::array<Action, 5>& actions()
{
    static const std::array<Action, 5> all = {{
        {easyUpdate(), &AppDelegate::btnUpdate_EasyUpdate, &AppDelegate::btnSelect_EasyUpdate},
        {flashRead(), &AppDelegate::btnRead_FwFlash, nullptr},
        {flashErase(), &AppDelegate::btnErase_FwFlash, nullptr},
        {scalarUpdate(), &AppDelegate::nsbtnUpdate_Scalar, &AppDelegate::nsbtnSelect_Scalar},
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
            const std::string path = writeFile("demo.bin", newFlash());
            chooseByTyping(tool().*select, QString::fromStdString(path));
            m_header = "FW:" + path + "(size=32768)\n\n";
        }
        hub().notifier().unwatch();
        m_opensBefore = hub().requestCount() / 2; // the window has looked at it: a greeting and a
                                                  // status each time
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
        SweepCount count;
        for (const std::size_t index : places) {
            SCOPED_TRACE(index);
            prepare(runs);
            const unsigned before = hub().faultsTriggered();
            hub().addFault(variant.at(base() + positionOf(variant.kind, wire, index)));
            pressAndExpect(*action, outcomeOf(action->flow, runs, variant, index));
            count.ran();
            count.fired(hub().faultsTriggered() - before);
            recover(wire[index]);
            pressAndExpect(*action, {action->flow.wireFrom(hub().runningCode()), std::nullopt});
            settle('\0');
            if (HasFailure()) {
                break;
            }
        }
        count.expect(places.size(), places.size());
    }

private:
    /// The hub with its old firmware, plugged in as told.
    void prepare(HubCode runs)
    {
        EXPECT_TRUE(hub().setFlash(oldFlash()));
        hub().unplug();
        hub().replug(runs);
    }

    /// What the hub has counted up to now of what the fault strikes.
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

    /// Counts what the last press has made of the hub.
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

    /// Back on power, with nothing more to go wrong.
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
        const int endsBefore = ends;
        const bool takesLeave = action.button == &AppDelegate::nsbtnUpdate_Scalar && !outcome.fails;
        QTest::mouseClick(button, Qt::LeftButton);
        EXPECT_TRUE(waitUntilEnabled());
        EXPECT_TRUE(waitFor([&] { return ends == endsBefore + (takesLeave ? 1 : 0); }));
        settleEvents();
        EXPECT_TRUE(allSwitched(true));
        EXPECT_FALSE(Hub_IsOpen());
        const std::lock_guard lock(m_mutex);
        EXPECT_EQ(m_wire, asObserved(outcome.wire));
        EXPECT_LE(clock().now() - begun, longestFor(m_wire) + (takesLeave ? kScalarFarewell : 0s));
        EXPECT_EQ(ends, endsBefore + (takesLeave ? 1 : 0));
        expectShown(action.flow, outcome.fails);
    }

    void expectShown(const Flow& flow, std::optional<Step> fails)
    {
        if (flow.steps.empty()) {
            EXPECT_EQ(progressText(), "");
            return;
        }
        std::string text;
        for (const StepTexts& step : flow.steps) {
            text += flow.writes && step.step == Step::Open ? m_header : step.begins;
            if (fails == step.step) {
                text += step.fails;
                break;
            }
        }
        text += fails ? flow.failure : flow.success;
        EXPECT_EQ(progressText(), text);
        EXPECT_EQ(hueOf(*tool().nstfUpdateInfo_UpdateFW), fails ? kRedHue : kBlueHue);
        if (!fails && flow.writes) {
            EXPECT_TRUE(hub().flash() == newFlash());
        }
    }

    std::string m_header;
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
